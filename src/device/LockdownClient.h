#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "device/AMDStatus.h"
#include "device/ByteLink.h"
#include "device/DeviceLimits.h"
#include "device/RequestList.h"
#include "util/PropertyList.h"

namespace salvor {

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
    /// An encrypted link ends with its session, any link with an answer that did not come or was
    /// none: what follows needs a new one.
    bool spent() const { return spent_; }

  private:
    /// Sends a request with these values and reads its answer.
    AMDStatus ask(const char* request, RequestValues values, PropertyList& answer);

    std::unique_ptr<ByteLink> link_;
    DeviceLimits limits_;
    std::string sessionID_;
    bool spent_ = false;
};

}  // namespace salvor
