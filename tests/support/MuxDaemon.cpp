#include "tests/support/MuxDaemon.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>

namespace salvor {
namespace {

constexpr std::uint32_t kPlistVersion = 1;
constexpr std::uint32_t kPlistMessage = 8;
constexpr std::uint32_t kLongestRequest = 1U << 20;
constexpr std::uint16_t kLockdownPort = 62078;

enum Result : std::uint32_t { kOk = 0, kBadCommand = 1, kBadDevice = 2, kRefused = 3 };

/// The head of a packet; the machine's own order of bytes is the protocol's.
using Head = std::array<std::uint32_t, 4>;  // length, version, message, tag

std::string packetOf(const Head& head, const std::string& body) {
    std::string bytes(sizeof head, '\0');
    std::memcpy(bytes.data(), head.data(), sizeof head);
    return bytes + body;
}

std::string packetOf(std::uint32_t tag, const PropertyListDictionary& list) {
    const std::string body = list.xml();
    const auto length = static_cast<std::uint32_t>(sizeof(Head) + body.size());
    return packetOf({length, kPlistVersion, kPlistMessage, tag}, body);
}

std::string resultOf(std::uint32_t tag, Result result) {
    PropertyListDictionary list;
    return packetOf(tag, list.text("MessageType", "Result").integer("Number", result));
}

/// What a daemon that is none sends, by its manner.
std::string nonsense(DaemonManner manner) {
    switch (manner) {
        case DaemonManner::Garbage:
            return std::string(16, '\x7f') + "no packet at all";
        case DaemonManner::HugeLength:
            return packetOf({0xffffffffU, kPlistVersion, kPlistMessage, 1}, "<plist>");
        case DaemonManner::SmallLength:
            return packetOf({3, kPlistVersion, kPlistMessage, 1}, "<plist>");
        case DaemonManner::NoList:
            return packetOf({16 + 12, kPlistVersion, kPlistMessage, 1}, "<plist><dict");
        default:
            return {};
    }
}

}  // namespace

struct MuxDaemon::Packet {
    Head head;
    PropertyList list;
    std::uint32_t tag() const { return head[3]; }
};

MuxDaemon::MuxDaemon(DaemonManner manner) : folder_("salvor-mux"), manner_(manner) {
    start();
}

std::string MuxDaemon::address() const {
    return "UNIX:" + (folder_ / "socket").string();
}

void MuxDaemon::start() {
    listening_ = std::make_shared<Socket>(Socket::listenAt(folder_ / "socket"));
    accepting_ = std::thread([this, socket = listening_] { acceptClients(*socket); });
}

void MuxDaemon::stop() {
    if (!listening_) return;
    std::filesystem::remove(folder_ / "socket");
    listening_->hangUp();
    accepting_.join();
    listening_.reset();
    {
        const std::lock_guard lock(mutex_);
        for (const auto& client : clients_) {
            if (const auto alive = client.lock()) alive->hangUp();
        }
        clients_.clear();
        listeners_.clear();
    }
    for (auto& thread : serving_) thread.join();
    serving_.clear();
}

void MuxDaemon::meetWith(DaemonManner manner) {
    const std::lock_guard lock(mutex_);
    manner_ = manner;
}

int MuxDaemon::clients() const {
    const std::lock_guard lock(mutex_);
    return clientCount_;
}

void MuxDaemon::plugIn(std::uint32_t id, std::shared_ptr<StandInDevice> device,
                       const std::string& connection) {
    const std::lock_guard lock(mutex_);
    const Plugged& plugged = devices_[id] = {std::move(device), connection};
    tell(attached(id, plugged));
}

void MuxDaemon::pullOut(std::uint32_t id) {
    const std::lock_guard lock(mutex_);
    devices_.erase(id);
    for (const auto& client : clients_) {
        const auto alive = client.lock();
        if (!alive) continue;
        const auto found = connectedTo_.find(alive.get());
        if (found != connectedTo_.end() && found->second == id) alive->hangUp();
    }
    PropertyListDictionary list;
    tell(packetOf(0, list.text("MessageType", "Detached").integer("DeviceID", id)));
}

void MuxDaemon::keepPairRecord(const std::string& udid, const std::string& record) {
    const std::lock_guard lock(mutex_);
    pairRecords_[udid] = record;
}

void MuxDaemon::tell(const std::string& packet) {
    for (const auto& listener : listeners_) {
        if (const auto alive = listener.lock()) alive->send(packet);
    }
}

PropertyListDictionary MuxDaemon::attachedList(std::uint32_t id, const Plugged& plugged) const {
    PropertyListDictionary properties;
    properties.text("ConnectionType", plugged.connection).integer("DeviceID", id);
    properties.integer("LocationID", 0).integer("ProductID", 0x12a8);
    properties.text("SerialNumber", plugged.device->udid);
    properties.data("NetworkAddress", "\x02\x01\x01\x01");
    PropertyListDictionary list;
    list.integer("DeviceID", id).text("MessageType", "Attached");
    list.dictionary("Properties", std::move(properties));
    return list;
}

std::string MuxDaemon::attached(std::uint32_t id, const Plugged& plugged) const {
    return packetOf(0, attachedList(id, plugged));
}

void MuxDaemon::acceptClients(const Socket& listening) {
    for (;;) {
        const auto client = std::make_shared<Socket>(listening.accept());
        if (!client->valid()) return;
        meet(client);
    }
}

void MuxDaemon::meet(const std::shared_ptr<Socket>& client) {
    const std::lock_guard lock(mutex_);
    ++clientCount_;
    if (manner_ != DaemonManner::Honest) {
        client->send(nonsense(manner_));
        client->hangUp();
        return;
    }
    clients_.push_back(client);
    serving_.emplace_back([this, client] {
        serve(client);
        client->hangUp();
        const std::lock_guard again(mutex_);
        connectedTo_.erase(client.get());
    });
}

void MuxDaemon::serve(const std::shared_ptr<Socket>& client) {
    for (;;) {
        const auto head = client->receive(sizeof(Head));
        if (!head) return;
        Packet packet;
        std::memcpy(packet.head.data(), head->data(), sizeof packet.head);
        if (packet.head[0] < sizeof(Head) || packet.head[0] > kLongestRequest) return;
        const auto body = client->receive(packet.head[0] - sizeof(Head));
        if (!body) return;
        packet.list = PropertyList::parse(
            {reinterpret_cast<const std::uint8_t*>(body->data()), body->size()});
        if (!answer(client, packet)) return;
    }
}

bool MuxDaemon::answer(const std::shared_ptr<Socket>& client, const Packet& packet) {
    const std::string type = packet.list.text("MessageType").value_or("");
    if (type == "Connect") return connect(*client, packet);
    const std::lock_guard lock(mutex_);
    if (type == "Listen") return listen(client, packet.tag());
    if (type == "ReadPairRecord") return readPairRecord(*client, packet);
    if (type == "ListDevices") {
        std::vector<PropertyListDictionary> all;
        for (const auto& [id, plugged] : devices_) all.push_back(attachedList(id, plugged));
        PropertyListDictionary list;
        return client->send(packetOf(packet.tag(), list.array("DeviceList", std::move(all))));
    }
    if (type == "ReadBUID") {
        PropertyListDictionary list;
        return client->send(packetOf(packet.tag(), list.text("BUID", "BUID")));
    }
    if (type == "SavePairRecord") {
        pairRecords_[packet.list.text("PairRecordID").value_or("")] =
            packet.list.data("PairRecordData").value_or("");
        return client->send(resultOf(packet.tag(), kOk));
    }
    return client->send(resultOf(packet.tag(), kBadCommand));
}

bool MuxDaemon::listen(const std::shared_ptr<Socket>& client, std::uint32_t tag) {
    if (!client->send(resultOf(tag, kOk))) return false;
    for (const auto& [id, plugged] : devices_) {
        if (!client->send(attached(id, plugged))) return false;
    }
    listeners_.push_back(client);
    return true;
}

bool MuxDaemon::readPairRecord(const Socket& client, const Packet& packet) {
    const auto found = pairRecords_.find(packet.list.text("PairRecordID").value_or(""));
    if (found == pairRecords_.end()) return client.send(resultOf(packet.tag(), kBadDevice));
    PropertyListDictionary list;
    return client.send(packetOf(packet.tag(), list.data("PairRecordData", found->second)));
}

// What follows on the connection is the device's.
bool MuxDaemon::connect(const Socket& client, const Packet& packet) {
    const auto id = static_cast<std::uint32_t>(packet.list.integer("DeviceID").value_or(0));
    const auto port =
        ntohs(static_cast<std::uint16_t>(packet.list.integer("PortNumber").value_or(0)));
    std::shared_ptr<StandInDevice> device;
    {
        const std::lock_guard lock(mutex_);
        const auto found = devices_.find(id);
        if (found != devices_.end()) device = found->second.device;
        connectedTo_[&client] = id;
    }
    if (!device) return client.send(resultOf(packet.tag(), kBadDevice)) && false;
    if (port != kLockdownPort) return client.send(resultOf(packet.tag(), kRefused)) && false;
    if (client.send(resultOf(packet.tag(), kOk))) device->serve(client);
    return false;
}

}  // namespace salvor
