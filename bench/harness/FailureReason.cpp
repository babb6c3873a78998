#include "FailureReason.h"

#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>

#include <exception>

namespace Bench {

std::string FailureReason() {
    try {
        throw;
    } catch (const VelNet::Exception& failure) {
        return VelBase::WideCharToUTF8(failure.GetMessage(), false).c_str();
    } catch (const VelBase::Message& failure) {
        return VelBase::WideCharToUTF8(failure.GetMessage(), false).c_str();
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "unknown failure";
    }
}

}  // namespace Bench
