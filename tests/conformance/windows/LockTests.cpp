#include <windows.h>
// Behind it.
#include <Platform/System.h>
#include <gtest/gtest.h>

#include <cstring>

TEST(Lock, OfZerosIsWhatTheSystemsInitializerMakes) {
    const System::Lock zeros = {};
    const SRWLOCK free = SRWLOCK_INIT;
    EXPECT_EQ(std::memcmp(zeros.storage, &free, sizeof free), 0);
}
