#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "device/AMDStatus.h"
#include "device/ByteLink.h"
#include "util/PropertyList.h"

namespace salvor {

/// How long and how much a device may answer.
struct DeviceLimits {
    std::chrono::milliseconds answerTime{10'000};  ///< for a request and its answer
    std::size_t answerBytes = std::size_t{4} << 20;
};

/// A request or answer of the lockdown service on the wire: four bytes of length, the highest
/// first, and an XML property list.
std::vector<std::uint8_t> lockdownRequest(
    const std::vector<std::pair<const char*, std::string>>& values);
/// The status of an answer: its "Error", or `kAMDInvalidAnswer` when it is no dictionary.
AMDStatus statusOfAnswer(const PropertyList& answer);

/// The lockdown service of one device, over a link to its port: who it is, sessions and values.
/// The device is not trusted to keep to the protocol: an answer is bounded in time and size, and
/// read as a hostile property list.
class LockdownClient {
  public:
    static constexpr std::uint16_t kPort = 62078;

    LockdownClient(std::unique_ptr<ByteLink> link, DeviceLimits limits)
        : link_(std::move(link)), limits_(limits) {}

    /// Whether it is a lockdown service that answers.
    AMDStatus queryType();
    /// Starts a session as the computer of `record`, encrypted if the device wants that.
    AMDStatus startSession(const PairRecord& record);
    AMDStatus stopSession();
    /// The answer that holds the value, or all of the domain's when `key` is null.
    AMDStatus getValue(const char* domain, const char* key, PropertyList& answer);
    /// An encrypted link ends with its session: what follows needs a new one.
    bool spent() const { return spent_; }

  private:
    AMDStatus ask(const std::vector<std::pair<const char*, std::string>>& values,
                  PropertyList& answer);

    std::unique_ptr<ByteLink> link_;
    DeviceLimits limits_;
    std::string sessionID_;
    bool spent_ = false;
};

}  // namespace salvor
