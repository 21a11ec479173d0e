#include "tests/support/StandInDevice.h"

#include <thread>

namespace salvor {
namespace {

constexpr std::size_t kLongestRequest = std::size_t{1} << 20;
constexpr auto kPublicKey = "DevicePublicKey";

/// The request as tests name it.
std::string nameOf(const PropertyList& request) {
    const std::string name = request.text("Request").value_or("?");
    if (name != "GetValue") return name;
    const Text domain = request.text("Domain");
    return name + ' ' + (domain ? domain.value_or("") + '/' : "") +
           request.text("Key").value_or("");
}

}  // namespace

bool sendWrongly(Socket& link, const DeviceFault& fault, const std::string& right) {
    const std::string bytes = fault.bytes.value_or(right);
    const std::size_t step = fault.between.count() > 0 ? 1 : bytes.size();
    std::this_thread::sleep_for(fault.before);
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        if (!link.send(bytes.substr(at, step))) return false;
        std::this_thread::sleep_for(fault.between);
    }
    return !fault.hangsUp;
}

std::string framed(const std::string& list) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(list.size() >> shift & 0xff);
    return bytes + list;
}

StandInDevice::StandInDevice(std::string identifier, const std::string& name)
    : udid(std::move(identifier)) {
    values = {
        {"DeviceName", name}, {"UniqueDeviceID", udid}, {kPublicKey, deviceIdentity().publicKey}};
}

std::string StandInDevice::pairRecord(const std::string& key) const {
    PropertyListDictionary record;
    record.text("HostID", hostID).text("SystemBUID", "BUID");
    record.data("HostCertificate", hostIdentity().certificate);
    record.data("HostPrivateKey", key);
    return record.xml();
}

const DeviceFault* StandInDevice::faultAt(const std::string& request) const {
    const auto found = faults.find(request);
    return found == faults.end() ? nullptr : &found->second;
}

void StandInDevice::serve(Socket& link) {
    Talk talk{link, {}};
    while (answerOne(talk)) continue;
}

std::vector<std::string> StandInDevice::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

bool StandInDevice::answerOne(Talk& talk) {
    const auto head = talk.link.receive(4);
    if (!head) return false;
    std::size_t size = 0;
    for (const char byte : *head) size = size << 8 | static_cast<unsigned char>(byte);
    const auto body = size <= kLongestRequest ? talk.link.receive(size) : std::nullopt;
    if (!body) return false;
    const auto request =
        PropertyList::parse({reinterpret_cast<const std::uint8_t*>(body->data()), body->size()});
    const std::string name = nameOf(request);
    const std::string reply = framed(answerTo(request, talk).xml());
    if (const auto* fault = faultAt(name)) return sendWrongly(talk.link, *fault, reply);
    if (!talk.link.send(reply)) return false;
    if (!encrypted) return true;
    if (name == "StartSession" && !talk.session.empty())
        return talk.link.startTls(deviceIdentity(), hostCertificate, onlyTls1);
    if (name == "StopSession") talk.link.stopTls();
    return true;
}

PropertyListDictionary StandInDevice::answerTo(const PropertyList& request, Talk& talk) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(nameOf(request));
    const std::string name = request.text("Request").value_or("");
    PropertyListDictionary reply;
    reply.text("Request", name);
    if (const auto error = errors.find(name); error != errors.end()) {
        reply.text("Error", error->second);
    } else if (name == "QueryType") {
        reply.text("Type", "com.apple.mobile.lockdown");
    } else if (name == "GetValue") {
        getValue(request, talk, reply);
    } else if (name == "StartSession") {
        startSession(request, talk, reply);
    } else if (name == "StopSession") {
        if (talk.session.empty() || request.text("SessionID") != talk.session)
            reply.text("Error", "SessionInactive");
        talk.session.clear();
    } else if (name == "Pair") {
        const PropertyList record = request.dictionary("PairRecord");
        hostID = record.text("HostID").value_or("");
        hostCertificate = record.data("HostCertificate").value_or("");
    } else {
        reply.text("Error", "InvalidRequest");
    }
    return reply;
}

void StandInDevice::getValue(const PropertyList& request, const Talk& talk,
                             PropertyListDictionary& reply) {
    const Text domain = request.text("Domain");
    const Text key = request.text("Key");
    const std::string prefix = domain ? domain.value_or("") + '/' : "";
    if (!key) {
        PropertyListDictionary all;
        for (const auto& [name, value] : values) {
            if (name.starts_with(prefix)) all.text(name.substr(prefix.size()), value);
        }
        reply.dictionary("Value", std::move(all));
        return;
    }
    const auto found = values.find(prefix + key.value_or(""));
    if (found == values.end()) {
        reply.text("Error", "MissingValue");
    } else if (talk.session.empty() && !openValues.contains(found->first)) {
        reply.text("Error", "GetProhibited");
    } else if (*key == kPublicKey) {
        reply.data("Value", found->second);
    } else {
        reply.text("Value", found->second);
    }
}

void StandInDevice::startSession(const PropertyList& request, Talk& talk,
                                 PropertyListDictionary& reply) {
    if (hostID.empty() || request.text("HostID") != hostID || !request.text("SystemBUID")) {
        reply.text("Error", "InvalidHostID");
        return;
    }
    talk.session = "session " + std::to_string(++sessions_);
    reply.text("SessionID", talk.session).boolean("EnableSessionSSL", encrypted);
}

}  // namespace salvor
