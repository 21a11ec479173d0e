#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace salvor {

/// What an operation on a device answers: 0 is success. 1 to 255 are the error numbers of the
/// lockdown service without their sign, 0x100 and above what happens on the way to it.
using AMDStatus = std::uint32_t;

inline constexpr AMDStatus kAMDSuccess = 0;
inline constexpr AMDStatus kAMDInvalidAnswer = 3;  ///< an answer that is no property list
inline constexpr AMDStatus kAMDPasswordProtected = 17;
inline constexpr AMDStatus kAMDUserDeniedPairing = 18;
inline constexpr AMDStatus kAMDPairingPending = 19;
inline constexpr AMDStatus kAMDMissingHostID = 20;
inline constexpr AMDStatus kAMDInvalidHostID = 21;
inline constexpr AMDStatus kAMDMissingPairRecord = 29;
inline constexpr AMDStatus kAMDInvalidPairRecord = 31;
inline constexpr AMDStatus kAMDUnknownError = 0xff;
inline constexpr AMDStatus kAMDNoDaemon = 0x101;
inline constexpr AMDStatus kAMDNoDevice = 0x102;
inline constexpr AMDStatus kAMDNotConnected = 0x103;
inline constexpr AMDStatus kAMDHungUp = 0x104;
inline constexpr AMDStatus kAMDTimedOut = 0x105;
inline constexpr AMDStatus kAMDCancelled = 0x106;
inline constexpr AMDStatus kAMDTlsFailed = 0x107;
inline constexpr AMDStatus kAMDNoPairingProgram = 0x108;
inline constexpr AMDStatus kAMDDaemonSilent = 0x109;
inline constexpr AMDStatus kAMDDaemonUnreadable = 0x10a;
inline constexpr AMDStatus kAMDNetworkOnly = 0x10b;

/// The status for an error text of the lockdown service, such as "PasswordProtected".
AMDStatus statusOfLockdownError(std::string_view error);

/// The status in words for a person; names the number where there are none.
std::string describeStatus(AMDStatus status);

/// The person at the device has to unlock it or to confirm that this computer is trusted.
bool meansNotTrusted(AMDStatus status);
/// This computer and the device do not know each other, or not any more: pairing may mend it.
bool meansNotPaired(AMDStatus status);

}  // namespace salvor
