#include <Platform/System.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstring>

TEST(Lock, OfZerosIsWhatTheSystemsInitializerMakes) {
    const System::Lock zeros = {};
    const pthread_mutex_t free = PTHREAD_MUTEX_INITIALIZER;
    EXPECT_EQ(std::memcmp(zeros.storage, &free, sizeof free), 0);
}
