#pragma once

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "device/MuxClient.h"

namespace salvor {

/// Tells what is plugged in and pulled out, from a thread of its own until it is destroyed: first
/// of all that is there, and of everything as pulled out when the daemon goes. One that is silent
/// for a while tells nothing. It asks the daemon for its list again and again.
class DeviceWatch {
  public:
    /// Both come on the watch's thread.
    struct Told {
        std::function<void(const AttachedDevice&)> arrived;
        std::function<void(const AttachedDevice&)> left;
    };

    DeviceWatch(Told told, const DeviceLimits& limits);

  private:
    void run(const std::stop_token& stop, const DeviceLimits& limits);
    void look(const MuxClient& daemon);

    Told told_;
    std::vector<AttachedDevice> known_;
    std::jthread thread_;
};

}  // namespace salvor
