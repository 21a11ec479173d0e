#include "device/MuxClient.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <netinet/in.h>
#include <utility>

#include "device/MuxAddress.h"

namespace salvor {
namespace {

/// Newer devices' identifiers have a dash behind the eighth character, which USB does not tell.
constexpr std::size_t kUndashedLength = 24;
constexpr std::size_t kDash = 8;

constexpr auto kProgram = "salvor";

struct Head {
    std::uint32_t length = 0;
    std::uint32_t version = 1;
    std::uint32_t kind = 8;
    std::uint32_t tag = 1;
};
static_assert(sizeof(Head) == 16);

std::vector<std::uint8_t> packetOf(const RequestValues& request) {
    auto bytes = requestBytes(request, sizeof(Head));
    Head head;
    head.length = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data(), &head, sizeof head);
    return bytes;
}

/// What is wrong with a link to the daemon, as a status of the daemon.
AMDStatus daemonStatus(AMDStatus status) {
    switch (status) {
        case kAMDTimedOut:
            return kAMDDaemonSilent;
        case kAMDHungUp:
        case kAMDInvalidAnswer:
            return kAMDDaemonUnreadable;
        default:
            return status;
    }
}

AttachedDevice deviceOf(const PropertyList& properties) {
    AttachedDevice device;
    device.handle = static_cast<std::uint32_t>(properties.integer("DeviceID").value_or(0));
    device.udid = properties.text("SerialNumber").value_or("");
    if (device.udid.size() == kUndashedLength) device.udid.insert(kDash, 1, '-');
    device.overNetwork = properties.text("ConnectionType").value_or("") == "Network";
    return device;
}

}  // namespace

AMDStatus MuxClient::receiveAnswer(ByteLink& link, std::size_t mostBytes,
                                   ByteLink::Deadline deadline, PropertyList& answer) {
    std::array<std::uint8_t, sizeof(Head)> bytes;
    if (const AMDStatus failed = link.receiveAll(bytes, deadline)) return failed;
    Head head;
    std::memcpy(&head, bytes.data(), sizeof head);
    const Head expected;
    if (head.kind != expected.kind || head.tag != expected.tag || head.length < sizeof head ||
        head.length - sizeof head > mostBytes)
        return kAMDInvalidAnswer;
    std::vector<std::uint8_t> list;
    if (const AMDStatus failed = link.receiveBlock(head.length - sizeof head, list, deadline))
        return failed;
    answer = PropertyList::parse(list);
    return kAMDSuccess;
}

AMDStatus MuxClient::ask(RequestValues request, PropertyList& answer,
                         std::unique_ptr<ByteLink>& link) const {
    constexpr std::uint64_t kLibraryVersion = 3;  // what today's daemons are asked as
    request.emplace_back("ClientVersionString", kProgram);
    request.emplace_back("ProgName", kProgram);
    request.emplace_back("kLibUSBMuxVersion", kLibraryVersion);
    const auto deadline = std::chrono::steady_clock::now() + limits_.daemonTime;
    AMDStatus status = connectToMux(link, stop_, deadline);
    if (status == kAMDSuccess) status = link->sendAll(packetOf(request), deadline);
    if (status == kAMDSuccess) status = receiveAnswer(*link, limits_.answerBytes, deadline, answer);
    return daemonStatus(status);
}

AMDStatus MuxClient::listDevices(std::vector<AttachedDevice>& devices) const {
    PropertyList answer;
    std::unique_ptr<ByteLink> link;
    if (const AMDStatus failed = ask({{"MessageType", "ListDevices"}}, answer, link)) return failed;
    if (!answer.has("DeviceList")) return kAMDDaemonUnreadable;
    devices = devicesIn(answer);
    return kAMDSuccess;
}

std::vector<AttachedDevice> MuxClient::devicesIn(const PropertyList& answer) {
    std::vector<AttachedDevice> devices;
    for (const auto& one : answer.dictionaries("DeviceList")) {
        if (devices.size() >= kMostDevices) break;
        devices.push_back(deviceOf(one.dictionary("Properties")));
    }
    return devices;
}

AMDStatus MuxClient::readPairRecord(const std::string& udid, PairRecord& record) const {
    PropertyList answer;
    std::unique_ptr<ByteLink> link;
    if (const AMDStatus failed =
            ask({{"MessageType", "ReadPairRecord"}, {"PairRecordID", udid}}, answer, link))
        return failed;
    const std::string data = answer.data("PairRecordData").value_or("");
    auto kept =
        PairRecord::parse({reinterpret_cast<const std::uint8_t*>(data.data()), data.size()});
    if (!kept) return kAMDMissingPairRecord;
    record = std::move(*kept);
    return kAMDSuccess;
}

AMDStatus MuxClient::connect(std::uint32_t handle, std::uint16_t port,
                             std::unique_ptr<ByteLink>& link) const {
    PropertyList answer;
    const AMDStatus status = ask({{"MessageType", "Connect"},
                                  {"DeviceID", std::uint64_t{handle}},
                                  {"PortNumber", std::uint64_t{htons(port)}}},
                                 answer, link);
    if (status == kAMDDaemonSilent) return kAMDTimedOut;  // it waits for the device itself
    if (status != kAMDSuccess) return status;
    const auto number = answer.integer("Number");
    if (!number) return kAMDDaemonUnreadable;
    return *number == 0 ? kAMDSuccess : kAMDNotConnected;
}

}  // namespace salvor
