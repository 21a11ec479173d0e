#include "device/LockdownClient.h"

#include <algorithm>
#include <cstdlib>
#include <plist/plist.h>

#include "device/PairRecord.h"

namespace salvor {
namespace {

constexpr std::size_t kLengthBytes = 4;
constexpr std::size_t kChunk = std::size_t{1} << 16;
constexpr auto kLabel = "salvor";

/// A request on the wire: four bytes of length, the highest first, and an XML property list.
std::vector<std::uint8_t> requestOf(const LockdownClient::Values& values) {
    const std::unique_ptr<void, decltype(&plist_free)> list(plist_new_dict(), &plist_free);
    for (const auto& [key, value] : values)
        plist_dict_set_item(list.get(), key, plist_new_string(value.c_str()));
    char* xml = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(list.get(), &xml, &size);
    const std::unique_ptr<char, decltype(&std::free)> owned(xml, &std::free);
    std::vector<std::uint8_t> bytes(kLengthBytes + size);
    for (std::size_t i = 0; i < kLengthBytes; ++i)
        bytes[i] = static_cast<std::uint8_t>(size >> (8 * (kLengthBytes - 1 - i)));
    std::copy_n(xml, size, bytes.begin() + kLengthBytes);
    return bytes;
}

/// The answer's bytes. They are taken in chunks, so that a length alone costs no memory.
AMDStatus receiveAnswer(ByteLink& link, std::size_t mostBytes, ByteLink::Deadline deadline,
                        std::vector<std::uint8_t>& data) {
    std::uint8_t head[kLengthBytes];
    if (const AMDStatus failed = link.receiveAll(head, deadline)) return failed;
    std::size_t left = 0;
    for (const std::uint8_t byte : head) left = left << 8 | byte;
    if (left > mostBytes) return kAMDInvalidAnswer;
    while (left > 0) {
        const std::size_t begin = data.size();
        const std::size_t part = std::min(left, kChunk);
        data.resize(begin + part);
        const auto target = std::span(data).subspan(begin);
        if (const AMDStatus failed = link.receiveAll(target, deadline)) return failed;
        left -= part;
    }
    return kAMDSuccess;
}

/// Whether these bytes held an answer to the request at all. Only an error may leave out to what.
bool answers(const PropertyList& answer, const char* request) {
    const Text to = answer.text("Request");
    return to ? *to == request : answer.has("Error");
}

/// The status of an answer: that of its "Error", or of its "Result".
AMDStatus statusOfAnswer(const PropertyList& answer) {
    if (answer.has("Error")) return statusOfLockdownError(answer.text("Error").value_or(""));
    const Text result = answer.text("Result");
    return !result || *result == "Success" ? kAMDSuccess : kAMDUnknownError;
}

}  // namespace

AMDStatus LockdownClient::ask(const char* request, Values values, PropertyList& answer) {
    values.emplace_back("Label", kLabel);
    values.emplace_back("Request", request);
    // Until the answer is there, whole and to this request: one that comes too late must not be
    // taken for the next one's.
    spent_ = true;
    const auto deadline = std::chrono::steady_clock::now() + limits_.answerTime;
    if (const AMDStatus failed = link_->sendAll(requestOf(values), deadline)) return failed;
    std::vector<std::uint8_t> data;
    if (const AMDStatus failed = receiveAnswer(*link_, limits_.answerBytes, deadline, data))
        return failed;
    answer = PropertyList::parse(data);
    if (!answers(answer, request)) return kAMDInvalidAnswer;
    spent_ = false;
    return statusOfAnswer(answer);
}

AMDStatus LockdownClient::queryType() {
    PropertyList answer;
    if (const AMDStatus failed = ask("QueryType", {}, answer)) return failed;
    const Text type = answer.text("Type");
    return type && *type == "com.apple.mobile.lockdown" ? kAMDSuccess : kAMDInvalidAnswer;
}

AMDStatus LockdownClient::startSession(const PairRecord& record) {
    PropertyList answer;
    const Values self{{"HostID", record.hostID}, {"SystemBUID", record.systemBUID}};
    if (const AMDStatus failed = ask("StartSession", self, answer)) return failed;
    const Text session = answer.text("SessionID");
    if (!session) return kAMDInvalidAnswer;
    sessionID_ = *session;
    if (!answer.boolean("EnableSessionSSL").value_or(false)) return kAMDSuccess;
    spent_ = true;  // until the handshake has succeeded, nobody can speak on it
    const auto deadline = std::chrono::steady_clock::now() + limits_.answerTime;
    if (const AMDStatus failed = link_->startTls(record, deadline)) return failed;
    spent_ = false;
    return kAMDSuccess;
}

AMDStatus LockdownClient::stopSession() {
    PropertyList answer;
    const AMDStatus status = ask("StopSession", {{"SessionID", sessionID_}}, answer);
    spent_ = spent_ || link_->encrypted();
    return status;
}

AMDStatus LockdownClient::getValue(const char* domain, const char* key, PropertyList& answer) {
    Values values;
    if (domain != nullptr) values.emplace_back("Domain", domain);
    if (key != nullptr) values.emplace_back("Key", key);
    return ask("GetValue", std::move(values), answer);
}

}  // namespace salvor
