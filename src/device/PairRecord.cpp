#include "device/PairRecord.h"

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

}  // namespace salvor
