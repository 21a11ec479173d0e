#include "device/LockdownClient.h"

#include "device/PairRecord.h"

namespace salvor {
namespace {

constexpr std::size_t kLengthBytes = 4;
constexpr auto kLabel = "salvor";

/// A request on the wire: four bytes of length, the highest first, and an XML property list.
std::vector<std::uint8_t> packetOf(const RequestValues& values) {
    auto bytes = requestBytes(values, kLengthBytes);
    const std::size_t size = bytes.size() - kLengthBytes;
    for (std::size_t i = 0; i < kLengthBytes; ++i)
        bytes[i] = static_cast<std::uint8_t>(size >> (8 * (kLengthBytes - 1 - i)));
    return bytes;
}

AMDStatus receiveAnswer(ByteLink& link, std::size_t mostBytes, ByteLink::Deadline deadline,
                        std::vector<std::uint8_t>& data) {
    std::uint8_t head[kLengthBytes];
    if (const AMDStatus failed = link.receiveAll(head, deadline)) return failed;
    std::size_t size = 0;
    for (const std::uint8_t byte : head) size = size << 8 | byte;
    return size > mostBytes ? kAMDInvalidAnswer : link.receiveBlock(size, data, deadline);
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

AMDStatus LockdownClient::ask(const char* request, RequestValues values, PropertyList& answer) {
    values.emplace_back("Label", kLabel);
    values.emplace_back("Request", request);
    // Until the answer is there, whole and to this request: one that comes too late must not be
    // taken for the next one's.
    spent_ = true;
    const auto deadline = std::chrono::steady_clock::now() + limits_.answerTime;
    if (const AMDStatus failed = link_->sendAll(packetOf(values), deadline)) return failed;
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
    const RequestValues self{{"HostID", record.hostID}, {"SystemBUID", record.systemBUID}};
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
    RequestValues values;
    if (domain != nullptr) values.emplace_back("Domain", domain);
    if (key != nullptr) values.emplace_back("Key", key);
    return ask("GetValue", std::move(values), answer);
}

}  // namespace salvor
