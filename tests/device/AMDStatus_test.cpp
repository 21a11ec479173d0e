#include "device/AMDStatus.h"

#include <gtest/gtest.h>

namespace salvor {
namespace {

struct ErrorCase {
    const char* error;
    AMDStatus status;
    bool notTrusted;
    const char* words;
};

const ErrorCase kErrorCases[] = {
    {"PasswordProtected", kAMDPasswordProtected, true, "the device is locked with its passcode"},
    {"InvalidHostID", kAMDInvalidHostID, true, "the device does not know this computer any more"},
    {"GetProhibited", 13, false, "the device does not tell this value"},
    {"Nobody knows", kAMDUnknownError, false, "the device answered with error ff"},
    {"", kAMDUnknownError, false, "the device answered with error ff"},
};

TEST(AMDStatus, TellsWhatALockdownErrorMeans) {
    for (const auto& one : kErrorCases) {
        SCOPED_TRACE(one.error);
        EXPECT_EQ(statusOfLockdownError(one.error), one.status);
        EXPECT_EQ(meansNotTrusted(one.status), one.notTrusted);
        EXPECT_EQ(describeStatus(one.status), one.words);
    }
}

}  // namespace
}  // namespace salvor
