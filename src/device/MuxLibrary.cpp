#include "device/MuxLibrary.h"

namespace salvor {

std::mutex& muxLibrary() {
    static std::mutex theMutex;
    return theMutex;
}

}  // namespace salvor
