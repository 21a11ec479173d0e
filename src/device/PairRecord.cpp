#include "device/PairRecord.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <usbmuxd.h>

#include "device/MuxLibrary.h"
#include "util/PropertyList.h"

namespace salvor {

std::optional<PairRecord> PairRecord::parse(Bytes data) {
    const PropertyList list = PropertyList::parse(data);
    const Text hostID = list.text("HostID");
    const Text systemBUID = list.text("SystemBUID");
    const auto certificate = list.data("HostCertificate");
    const auto privateKey = list.data("HostPrivateKey");
    if (!hostID || !systemBUID || !certificate || !privateKey) return std::nullopt;
    return PairRecord{std::string(*hostID), std::string(*systemBUID), *certificate, *privateKey};
}

std::optional<PairRecord> PairRecord::ofDevice(const std::string& udid) {
    char* data = nullptr;
    std::uint32_t size = 0;
    const std::lock_guard lock(muxLibrary());
    const int failed = usbmuxd_read_pair_record(udid.c_str(), &data, &size);
    const std::unique_ptr<char, decltype(&std::free)> owned(data, &std::free);
    if (failed != 0 || data == nullptr) return std::nullopt;
    return parse({reinterpret_cast<const std::uint8_t*>(data), size});
}

}  // namespace salvor
