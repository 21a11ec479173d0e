#include "device/Pairing.h"

#include <charconv>
#include <condition_variable>
#include <iterator>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "device/HelperTask.h"

namespace salvor {
namespace {

constexpr auto kProgram = "idevicepair";

/// By a part of the program's last line.
constexpr std::pair<std::string_view, AMDStatus> kOutcomes[] = {
    {"SUCCESS", kAMDSuccess},
    {"a passcode is set", kAMDPasswordProtected},
    {"accept the trust dialog", kAMDPairingPending},
    {"denied the trust dialog", kAMDUserDeniedPairing},
    {"is not paired with this host", kAMDInvalidHostID},
    {"No device found", kAMDNoDevice},
};

/// What the program's own library counts otherwise than the lockdown service; without sign.
constexpr std::pair<AMDStatus, AMDStatus> kLibraryErrors[] = {
    {5, kAMDTlsFailed}, {7, kAMDTimedOut}, {8, kAMDHungUp}, {256, kAMDUnknownError}};

AMDStatus statusOfNumber(std::string_view line) {
    constexpr std::string_view kBefore = "error code -";
    const auto begin = line.find(kBefore);
    if (begin == std::string_view::npos) return kAMDUnknownError;
    line.remove_prefix(begin + kBefore.size());
    AMDStatus number = 0;
    std::from_chars(line.data(), line.data() + line.size(), number);
    for (const auto& [theirs, ours] : kLibraryErrors)
        if (theirs == number) return ours;
    return number > kAMDSuccess && number < kAMDUnknownError ? number : kAMDUnknownError;
}

AMDStatus statusOf(const HelperResult& result) {
    if (!result.startFailure.empty()) return kAMDNoPairingProgram;
    if (result.signal) return kAMDInvalidAnswer;  // the device's answer was too much for it
    for (const auto& [part, status] : kOutcomes)
        if (result.usefulLine.find(part) != std::string::npos) return status;
    return statusOfNumber(result.usefulLine);
}

}  // namespace

// A program of its own, since pairing is the library's and reads a device's answers without our
// guard; besides, the library cannot be interrupted.
AMDStatus pairWithDevice(const std::string& udid, std::chrono::milliseconds limit,
                         const std::stop_token& stop) {
    if (stop.stop_requested()) return kAMDCancelled;
    std::mutex mutex;
    std::condition_variable_any done;
    std::optional<HelperResult> result;
    const HelperTask task({kProgram, "--udid", udid, "pair"}, nullptr,
                          [&](const HelperResult& ended) {
                              const std::lock_guard lock(mutex);
                              result = ended;
                              done.notify_all();
                          });
    std::unique_lock lock(mutex);
    done.wait_for(lock, stop, limit, [&] { return result.has_value(); });
    if (result) return statusOf(*result);
    return stop.stop_requested() ? kAMDCancelled : kAMDTimedOut;
}

}  // namespace salvor
