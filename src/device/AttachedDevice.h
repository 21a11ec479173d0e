#pragma once

#include <cstdint>
#include <string>

namespace salvor {

/// A device as the multiplexer daemon lists it.
struct AttachedDevice {
    std::uint32_t handle = 0;  ///< the daemon's number for it
    std::string udid;
    bool overNetwork = false;  ///< not at a cable
    bool operator==(const AttachedDevice&) const = default;
};

}  // namespace salvor
