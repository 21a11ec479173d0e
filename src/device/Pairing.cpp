#include "device/Pairing.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace salvor {
namespace {

/// Attempts that devices keep hanging; more are not begun.
constexpr int kMostAtOnce = 4;
std::atomic<int> attemptsUnderWay{0};

/// What the library calls otherwise.
constexpr std::pair<lockdownd_error_t, AMDStatus> kStatuses[] = {
    {LOCKDOWN_E_SUCCESS, kAMDSuccess},           {LOCKDOWN_E_UNKNOWN_ERROR, kAMDUnknownError},
    {LOCKDOWN_E_MUX_ERROR, kAMDHungUp},          {LOCKDOWN_E_RECEIVE_TIMEOUT, kAMDTimedOut},
    {LOCKDOWN_E_PLIST_ERROR, kAMDInvalidAnswer}, {LOCKDOWN_E_SSL_ERROR, kAMDTlsFailed},
};

AMDStatus statusOf(lockdownd_error_t error) {
    const auto* found = std::find_if(std::begin(kStatuses), std::end(kStatuses),
                                     [error](const auto& row) { return row.first == error; });
    return found != std::end(kStatuses) ? found->second : static_cast<AMDStatus>(-error);
}

AMDStatus pairUnbounded(const std::string& udid) {
    idevice_t device = nullptr;
    if (idevice_new(&device, udid.c_str()) != IDEVICE_E_SUCCESS) return kAMDNoDevice;
    lockdownd_client_t client = nullptr;
    lockdownd_error_t result = lockdownd_client_new(device, &client, "salvor");
    if (result == LOCKDOWN_E_SUCCESS) {
        result = lockdownd_pair(client, nullptr);
        lockdownd_client_free(client);
    }
    idevice_free(device);
    return statusOf(result);
}

/// What the caller and the attempt share; the one that is later lets go of it.
struct Attempt {
    std::mutex mutex;
    std::condition_variable_any done;
    std::optional<AMDStatus> status;
};

}  // namespace

// The library waits half a minute for each answer and cannot be interrupted. It therefore works on
// a thread of its own, which is left to it when nobody waits any more.
AMDStatus pairWithDevice(const std::string& udid, std::chrono::milliseconds limit,
                         const std::stop_token& stop) {
    if (stop.stop_requested()) return kAMDCancelled;
    if (attemptsUnderWay >= kMostAtOnce) return kAMDTimedOut;
    const auto attempt = std::make_shared<Attempt>();
    ++attemptsUnderWay;
    std::thread([attempt, udid] {
        const AMDStatus status = pairUnbounded(udid);
        --attemptsUnderWay;
        const std::lock_guard lock(attempt->mutex);
        attempt->status = status;
        attempt->done.notify_all();
    }).detach();
    std::unique_lock lock(attempt->mutex);
    attempt->done.wait_for(lock, stop, limit, [&] { return attempt->status.has_value(); });
    if (attempt->status) return *attempt->status;
    return stop.stop_requested() ? kAMDCancelled : kAMDTimedOut;
}

}  // namespace salvor
