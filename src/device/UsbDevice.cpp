#include "device/UsbDevice.h"

#include <string_view>

#include "device/Pairing.h"
#include "util/Utf8.h"

namespace salvor {

AMDStatus UsbDevice::open(const std::stop_token& stop) {
    std::unique_ptr<ByteLink> link;
    const MuxClient daemon(limits_, stop);
    if (const AMDStatus failed = daemon.connect(attached_.handle, LockdownClient::kPort, link))
        return failed;
    auto lockdown = std::make_unique<LockdownClient>(std::move(link), limits_);
    if (const AMDStatus failed = lockdown->queryType()) return failed;
    lockdown_ = std::move(lockdown);
    return kAMDSuccess;
}

void UsbDevice::dropSpent(AMDStatus status) {
    if (!lockdown_->spent()) return;
    lockdown_.reset();  // what follows gets a link of its own
    ended_ = status == kAMDSuccess ? kAMDNotConnected : status;
}

AMDStatus UsbDevice::connect(const std::stop_token& stop) {
    const AMDStatus status = open(stop);
    wanted_ = status == kAMDSuccess;
    return status;
}

void UsbDevice::disconnect() {
    lockdown_.reset();
    wanted_ = false;
}

AMDStatus UsbDevice::startSession(const std::stop_token& stop) {
    if (!wanted_) return kAMDNotConnected;
    const MuxClient daemon(limits_, stop);
    PairRecord record;
    AMDStatus status = daemon.readPairRecord(attached_.udid, record);
    if (status == kAMDSuccess) status = startSessionAs(record, stop);
    if (!meansNotPaired(status)) return status;
    if (const AMDStatus failed = pairWithDevice(attached_.udid, limits_.pairingTime, stop))
        return failed;
    if (const AMDStatus failed = daemon.readPairRecord(attached_.udid, record)) return failed;
    lockdown_.reset();
    return startSessionAs(record, stop);
}

AMDStatus UsbDevice::startSessionAs(const PairRecord& record, const std::stop_token& stop) {
    if (!lockdown_) {
        if (const AMDStatus failed = open(stop)) return failed;
    }
    const AMDStatus status = lockdown_->startSession(record);
    dropSpent(status);
    return status;
}

AMDStatus UsbDevice::stopSession() {
    if (!lockdown_) return ended_;
    const AMDStatus status = lockdown_->stopSession();
    dropSpent(status);
    return status;
}

std::optional<AMDeviceValue> UsbDevice::copyValue(const char* domain, const char* key,
                                                  const std::stop_token& stop) {
    if (!wanted_) return std::nullopt;
    if (!lockdown_ && open(stop) != kAMDSuccess) return std::nullopt;
    PropertyList answer;
    const AMDStatus status = lockdown_->getValue(domain, key, answer);
    dropSpent(status);
    if (status == kAMDSuccess && answer.has("Value")) return AMDeviceValue(answer);
    // Newer devices tell their identifier to computers that they trust alone.
    const std::string& udid = attached_.udid;
    const bool isIdentifier =
        domain == nullptr && key != nullptr && std::string_view(key) == "UniqueDeviceID";
    if (!isIdentifier || udid.empty() || !isValidUtf8(udid)) return std::nullopt;
    return AMDeviceValue(udid);
}

}  // namespace salvor
