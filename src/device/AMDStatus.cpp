#include "device/AMDStatus.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace salvor {
namespace {

struct StatusRow {
    AMDStatus status;
    const char* error;  ///< as the lockdown service calls it; null for what is not its own
    const char* words;
    bool notTrusted = false;
};

constexpr StatusRow kRows[] = {
    {kAMDSuccess, nullptr, "success"},
    {kAMDInvalidAnswer, nullptr, "the device gave an answer that cannot be read"},
    {4, "PairingFailed", "pairing failed", true},
    {10, "InvalidResponse", "the device did not understand the request"},
    {11, "MissingKey", "the device has no such value"},
    {12, "MissingValue", "the device has no such value"},
    {13, "GetProhibited", "the device does not tell this value"},
    {kAMDPasswordProtected, "PasswordProtected", "the device is locked with its passcode", true},
    {kAMDUserDeniedPairing, "UserDeniedPairing", "this computer was not trusted on the device",
     true},
    {kAMDPairingPending, "PairingDialogResponsePending",
     "the device asks whether this computer is to be trusted", true},
    {kAMDMissingHostID, "MissingHostID", "the device does not know this computer", true},
    {kAMDInvalidHostID, "InvalidHostID", "the device does not know this computer any more", true},
    {22, "SessionActive", "a session is active already"},
    {23, "SessionInactive", "no session is active"},
    {kAMDMissingPairRecord, "MissingPairRecord", "this computer is not trusted yet", true},
    {kAMDInvalidPairRecord, "InvalidPairRecord",
     "what this computer knows of the device is damaged", true},
    {30, "SavePairRecordFailed", "the pairing could not be kept"},
    {kAMDNoDaemon, nullptr, "no multiplexer daemon answers"},
    {kAMDNoDevice, nullptr, "no such device is connected"},
    {kAMDNotConnected, nullptr, "the device is not connected"},
    {kAMDHungUp, nullptr, "the device hung up"},
    {kAMDTimedOut, nullptr, "the device did not answer in time"},
    {kAMDCancelled, nullptr, "cancelled"},
    {kAMDTlsFailed, nullptr, "the encrypted session could not be set up"},
    {kAMDNoPairingProgram, nullptr,
     "this computer is not trusted yet, and idevicepair, which asks for that, could not be started "
     "(it is in the package libimobiledevice-utils)"},
    {kAMDDaemonSilent, nullptr, "the multiplexer daemon does not answer"},
    {kAMDDaemonUnreadable, nullptr, "the multiplexer daemon gave no answer that can be read"},
    {kAMDNetworkOnly, nullptr, "the device is reached over the network alone"},
};

const StatusRow* rowOf(AMDStatus status) {
    const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                     [status](const auto& row) { return row.status == status; });
    return found == std::end(kRows) ? nullptr : found;
}

}  // namespace

AMDStatus statusOfLockdownError(std::string_view error) {
    for (const auto& row : kRows) {
        if (row.error != nullptr && row.error == error) return row.status;
    }
    return kAMDUnknownError;
}

std::string describeStatus(AMDStatus status) {
    const StatusRow* row = rowOf(status);
    return row != nullptr ? row->words : fmt::format("the device answered with error {:x}", status);
}

bool meansNotTrusted(AMDStatus status) {
    const StatusRow* row = rowOf(status);
    return row != nullptr && row->notTrusted;
}

bool meansNotPaired(AMDStatus status) {
    return status == kAMDMissingHostID || status == kAMDInvalidHostID ||
           status == kAMDMissingPairRecord || status == kAMDInvalidPairRecord;
}

}  // namespace salvor
