#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "device/AMDStatus.h"

namespace salvor {

/// A device at a cable, as the multiplexer daemon lists it.
struct AttachedDevice {
    std::uint32_t handle = 0;  ///< the daemon's number for it
    std::string udid;
    bool operator==(const AttachedDevice&) const = default;
};

/// Appends what is attached now. `kAMDNoDaemon` when no daemon answers.
AMDStatus listAttachedDevices(std::vector<AttachedDevice>& devices);

/// Tells what is plugged in and pulled out, from a thread of its own until it is destroyed: first
/// of all that is there, and of everything as pulled out when the daemon goes. It asks the daemon
/// for its list again and again. The library's own subscription is not used: when a daemon hangs
/// up on it or sends nonsense, it connects anew without a pause and loses a file descriptor each
/// time, until the library ends the program.
class DeviceWatch {
  public:
    /// Both come on the watch's thread.
    struct Told {
        std::function<void(const AttachedDevice&)> arrived;
        std::function<void(const AttachedDevice&)> left;
    };

    DeviceWatch(Told told, std::chrono::milliseconds pause);

  private:
    void run(const std::stop_token& stop, std::chrono::milliseconds pause);
    void look();

    Told told_;
    std::vector<AttachedDevice> known_;
    std::jthread thread_;
};

}  // namespace salvor
