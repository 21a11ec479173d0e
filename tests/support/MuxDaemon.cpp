#include "tests/support/MuxDaemon.h"

#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <cstring>

namespace salvor {
namespace {

constexpr auto kAddressVariable = "USBMUXD_SOCKET_ADDRESS";
constexpr std::uint32_t kLongestRequest = 1U << 20;
constexpr std::uint16_t kLockdownPort = 62078;

enum Result : std::uint32_t { kOk = 0, kBadCommand = 1, kBadDevice = 2 };

/// The head of a packet: its length, the protocol's version, the kind of message and a tag that its
/// answer repeats. The machine's own order of bytes is the protocol's.
using Head = std::array<std::uint32_t, 4>;

std::string packetOf(std::uint32_t tag, const PropertyListDictionary& list) {
    constexpr std::uint32_t kVersion = 1;
    constexpr std::uint32_t kPropertyList = 8;
    const std::string body = list.xml();
    const Head head{static_cast<std::uint32_t>(sizeof(Head) + body.size()), kVersion, kPropertyList,
                    tag};
    std::string bytes(sizeof head, '\0');
    std::memcpy(bytes.data(), head.data(), sizeof head);
    return bytes + body;
}

PropertyListDictionary resultOf(Result result) {
    PropertyListDictionary list;
    list.text("MessageType", "Result").integer("Number", result);
    return list;
}

}  // namespace

MuxDaemon::MuxDaemon() {
    ::setenv(kAddressVariable, ("UNIX:" + (folder_ / "socket").string()).c_str(), 1);
    start();
}

MuxDaemon::~MuxDaemon() {
    stop();
    ::unsetenv(kAddressVariable);
}

void MuxDaemon::start() {
    listening_ = std::make_unique<Socket>(folder_ / "socket");
    accepting_ = std::thread([this] { acceptClients(); });
}

void MuxDaemon::stop() {
    if (!listening_) return;
    std::filesystem::remove(folder_ / "socket");
    listening_->hangUp();
    accepting_.join();
    listening_.reset();
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [client, device] : clients_) client->hangUp();
    }
    for (auto& thread : serving_) thread.join();
    serving_.clear();
}

void MuxDaemon::meetWith(std::optional<DeviceFault> fault) {
    const std::lock_guard lock(mutex_);
    fault_ = std::move(fault);
}

int MuxDaemon::clients() const {
    const std::lock_guard lock(mutex_);
    return clientCount_;
}

void MuxDaemon::plugIn(std::uint32_t id, const std::shared_ptr<StandInDevice>& device) {
    const std::lock_guard lock(mutex_);
    devices_[id] = device;
    if (!device->hostID.empty()) pairRecords_[device->udid] = device->pairRecord();
}

void MuxDaemon::pullOut(std::uint32_t id) {
    const std::lock_guard lock(mutex_);
    devices_.erase(id);
    for (const auto& [client, device] : clients_) {
        if (device == id) client->hangUp();
    }
}

void MuxDaemon::keepPairRecord(const std::string& udid, const std::string& record) {
    const std::lock_guard lock(mutex_);
    pairRecords_[udid] = record;
}

void MuxDaemon::acceptClients() {
    while (const auto client = listening_->accept()) meet(client);
}

void MuxDaemon::meet(const std::shared_ptr<Socket>& client) {
    const std::lock_guard lock(mutex_);
    ++clientCount_;
    clients_[client] = 0;
    serving_.emplace_back([this, client, fault = fault_] {
        if (!fault) {
            serve(client);
        } else if (sendWrongly(*client, *fault, "")) {
            while (client->receive(1)) continue;  // until the client goes
        }
        client->hangUp();
        const std::lock_guard again(mutex_);
        clients_.erase(client);
    });
}

void MuxDaemon::serve(const std::shared_ptr<Socket>& client) {
    for (;;) {
        const auto bytes = client->receive(sizeof(Head));
        if (!bytes) return;
        Head head;
        std::memcpy(head.data(), bytes->data(), sizeof head);
        const auto [length, version, message, tag] = head;
        if (length < sizeof head || length > kLongestRequest) return;
        const auto body = client->receive(length - sizeof head);
        if (!body) return;
        const auto request = PropertyList::parse(
            {reinterpret_cast<const std::uint8_t*>(body->data()), body->size()});
        if (request.text("MessageType") == "Connect") {
            const auto device = connect(client, request);
            const auto answer = packetOf(tag, resultOf(device ? kOk : kBadDevice));
            const auto* fault = device ? device->faultAt("Connect") : nullptr;
            const bool goesOn =
                fault != nullptr ? sendWrongly(*client, *fault, answer) : client->send(answer);
            // What follows on the connection is the device's.
            if (device && goesOn) device->serve(*client);
            return;
        }
        if (!client->send(answerTo(tag, request))) return;
    }
}

std::vector<PropertyListDictionary> MuxDaemon::deviceList() const {
    std::vector<PropertyListDictionary> all;
    for (const auto& [id, device] : devices_) {
        PropertyListDictionary properties;
        properties.integer("DeviceID", id).text("SerialNumber", device->udid);
        properties.text("ConnectionType", device->connection);
        properties.data("NetworkAddress", "\x02\x01\x01\x01");
        all.emplace_back().text("MessageType", "Attached").integer("DeviceID", id);
        all.back().dictionary("Properties", std::move(properties));
    }
    return all;
}

std::string MuxDaemon::answerTo(std::uint32_t tag, const PropertyList& request) {
    const std::lock_guard lock(mutex_);
    const std::string type = request.text("MessageType").value_or("");
    PropertyListDictionary reply;
    if (type == "ListDevices") return packetOf(tag, reply.array("DeviceList", deviceList()));
    if (type == "ReadBUID") return packetOf(tag, reply.text("BUID", "BUID"));
    if (type == "Listen") {  // whoever has got nonsense instead of a list asks so from then on
        std::string packets = packetOf(tag, resultOf(kOk));
        for (const auto& device : deviceList()) packets += packetOf(0, device);
        return packets;
    }
    auto& record = pairRecords_[request.text("PairRecordID").value_or("")];
    if (type == "SavePairRecord") {
        record = request.data("PairRecordData").value_or("");
        return packetOf(tag, resultOf(kOk));
    }
    if (type != "ReadPairRecord") return packetOf(tag, resultOf(kBadCommand));
    if (record.empty()) return packetOf(tag, resultOf(kBadDevice));
    return packetOf(tag, reply.data("PairRecordData", record));
}

/// The device that the client wants to speak to; null when there is none, or none at that port.
std::shared_ptr<StandInDevice> MuxDaemon::connect(const std::shared_ptr<Socket>& client,
                                                  const PropertyList& request) {
    const auto id = static_cast<std::uint32_t>(request.integer("DeviceID").value_or(0));
    const auto port = static_cast<std::uint16_t>(request.integer("PortNumber").value_or(0));
    const std::lock_guard lock(mutex_);
    const auto found = devices_.find(id);
    if (found == devices_.end() || ntohs(port) != kLockdownPort) return nullptr;
    clients_[client] = id;
    return found->second;
}

}  // namespace salvor
