#include "tests/support/StandInDevice.h"

#include <thread>

namespace salvor {
namespace {

constexpr std::size_t kLongestRequest = std::size_t{1} << 20;

std::string lengthOf(std::size_t size) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(size >> shift & 0xff);
    return bytes;
}

std::string framed(const std::string& list) {
    return lengthOf(list.size()) + list;
}

PropertyList parse(const std::string& list) {
    return PropertyList::parse({reinterpret_cast<const std::uint8_t*>(list.data()), list.size()});
}

/// The request as tests name it.
std::string nameOf(const PropertyList& request) {
    const std::string name = request.text("Request").value_or("?");
    if (name != "GetValue") return name;
    const Text domain = request.text("Domain");
    return name + ' ' + (domain ? *domain + '/' : "") + request.text("Key").value_or("");
}

/// Sends what the fault makes of the right answer. False when the link ends with it.
bool sendWrongly(ServiceLink& link, DeviceFault fault, const std::string& list,
                 std::chrono::milliseconds lateness) {
    const std::string right = framed(list);
    const auto endAfter = [&link](const std::string& bytes) { return link.send(bytes) && false; };
    switch (fault) {
        case DeviceFault::HangsUp:
            return false;
        case DeviceFault::HangsUpInLength:
            return endAfter(right.substr(0, 2));
        case DeviceFault::HangsUpInAnswer:
            return endAfter(right.substr(0, right.size() / 2));
        case DeviceFault::Garbage:
            return link.send(framed("\x01\x02 <<<garbage>>> \xff\xfe"));
        case DeviceFault::HugeLength:
            return link.send("\xff\xff\xff\xff");
        case DeviceFault::FloodsHugeLength:
            if (!link.send("\xff\xff\xff\xff")) return false;
            while (link.send(std::string(65536, 'x'))) continue;
            return false;
        case DeviceFault::Truncated:
            return link.send(framed(list.substr(0, list.size() / 2)));
        case DeviceFault::NoDictionary:
            return link.send(
                framed("<plist version=\"1.0\"><array><string>Request</string>"
                       "</array></plist>"));
        case DeviceFault::OtherRequest:
            return link.send(
                framed("<plist version=\"1.0\"><dict><key>Request</key><string>Other"
                       "</string><key>Value</key><string>x</string></dict></plist>"));
        case DeviceFault::DripFed:
            for (const char byte : right) {
                if (!link.send({&byte, 1})) return false;
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            return true;
        case DeviceFault::Late:
            std::this_thread::sleep_for(lateness);
            return link.send(right);
        case DeviceFault::Silent:
            return true;
    }
    return false;
}

void set(PropertyListDictionary& list, const std::string& key, const StandInDevice::Value& value) {
    if (const bool* truth = std::get_if<bool>(&value)) {
        list.boolean(key, *truth);
    } else if (const auto* data = std::get_if<StandInDevice::Data>(&value)) {
        list.data(key, data->bytes);
    } else {
        list.text(key, std::get<std::string>(value));
    }
}

}  // namespace

/// One computer's connection to the service.
struct StandInDevice::Talk {
    ServiceLink link;
    int number = 0;
    std::string session;
    bool startsTls = false;
    bool stopsTls = false;
};

StandInDevice::StandInDevice(std::string identifier, const std::string& name)
    : udid(std::move(identifier)) {
    values = {{"DeviceName", name},
              {"UniqueDeviceID", udid},
              {"DevicePublicKey", Data{deviceIdentity().publicKey}}};
}

std::string StandInDevice::pairRecord() const {
    PropertyListDictionary record;
    record.text("HostID", hostID).text("SystemBUID", "BUID");
    record.data("HostCertificate", hostIdentity().certificate);
    record.data("HostPrivateKey", hostIdentity().privateKey);
    return record.xml();
}

void StandInDevice::serve(const Socket& socket) {
    Talk talk{ServiceLink(socket), 0, {}, false, false};
    {
        const std::lock_guard lock(mutex_);
        talk.number = ++connections_;
    }
    while (answerOne(talk)) continue;
}

std::vector<std::string> StandInDevice::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

int StandInDevice::connections() const {
    const std::lock_guard lock(mutex_);
    return connections_;
}

bool StandInDevice::answerOne(Talk& talk) {
    const auto head = talk.link.receive(4);
    if (!head) return false;
    std::size_t size = 0;
    for (const char byte : *head) size = size << 8 | static_cast<unsigned char>(byte);
    const auto body = size <= kLongestRequest ? talk.link.receive(size) : std::nullopt;
    if (!body) return false;
    const PropertyList request = parse(*body);
    const std::string name = nameOf(request);
    PropertyListDictionary reply;
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(name);
        if (!answer(talk, request, reply)) return false;
    }
    const auto fault = faults.find(name);
    if (fault != faults.end()) return sendWrongly(talk.link, fault->second, reply.xml(), lateness);
    if (!talk.link.send(framed(reply.xml()))) return false;
    if (talk.startsTls && !talk.link.startTls(deviceIdentity(), hostCertificate, onlyTls1))
        return false;
    if (talk.stopsTls) talk.link.stopTls();
    talk.startsTls = talk.stopsTls = false;
    return true;
}

bool StandInDevice::answer(Talk& talk, const PropertyList& request, PropertyListDictionary& reply) {
    const std::string name = request.text("Request").value_or("");
    reply.text("Request", name);
    if (const auto error = errors.find(name); error != errors.end()) {
        reply.text("Error", error->second);
    } else if (name == "QueryType") {
        reply.text("Type", "com.apple.mobile.lockdown");
    } else if (name == "GetValue") {
        getValue(talk, request, reply);
    } else if (name == "StartSession") {
        startSession(talk, request, reply);
    } else if (name == "StopSession") {
        if (talk.session.empty() || request.text("SessionID") != talk.session)
            reply.text("Error", "SessionInactive");
        talk.session.clear();
        talk.stopsTls = encrypted;
    } else if (name == "Pair") {
        pair(request);
    } else {
        return false;
    }
    return true;
}

void StandInDevice::getValue(const Talk& talk, const PropertyList& request,
                             PropertyListDictionary& reply) {
    const Text domain = request.text("Domain");
    const Text key = request.text("Key");
    const std::string prefix = domain ? *domain + '/' : "";
    if (domain) reply.text("Domain", *domain);
    if (key) {
        reply.text("Key", *key);
        const auto found = values.find(prefix + *key);
        if (found == values.end()) {
            reply.text("Error", "MissingValue");
        } else if (talk.session.empty() && !openValues.contains(found->first)) {
            reply.text("Error", "GetProhibited");
        } else {
            set(reply, "Value", found->second);
        }
        return;
    }
    PropertyListDictionary all;
    for (const auto& [name, value] : values) {
        const auto slash = name.find('/');
        const bool here = domain ? name.starts_with(prefix) : slash == std::string::npos;
        if (here) set(all, name.substr(prefix.size()), value);
    }
    reply.dictionary("Value", std::move(all));
}

void StandInDevice::startSession(Talk& talk, const PropertyList& request,
                                 PropertyListDictionary& reply) {
    const Text host = request.text("HostID");
    if (!host || hostID.empty() || *host != hostID || !request.text("SystemBUID")) {
        reply.text("Error", "InvalidHostID");
        return;
    }
    talk.session = "session of connection " + std::to_string(talk.number);
    talk.startsTls = encrypted;
    reply.text("SessionID", talk.session).boolean("EnableSessionSSL", encrypted);
}

void StandInDevice::pair(const PropertyList& request) {
    const PropertyList record = request.dictionary("PairRecord");
    hostID = record.text("HostID").value_or("");
    hostCertificate = record.data("HostCertificate").value_or("");
}

}  // namespace salvor
