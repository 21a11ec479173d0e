// What a device says: pair records, and answers of its lockdown service over a socket, up to the
// handshake of an encrypted session. Also what the multiplexer daemon answers.
#include <sys/socket.h>
#include <unistd.h>

#include "device/LockdownClient.h"
#include "device/MobileDeviceFramework.h"
#include "device/MuxClient.h"
#include "device/PairRecord.h"
#include "fuzz/Target.h"
#include "tests/support/Identity.h"
#include "util/Utf8.h"

using namespace salvor;

namespace {

constexpr std::size_t kAnswerBytes = std::size_t{1} << 16;

/// A device that says `words` whatever it is asked, and then nothing more.
class Speaker {
  public:
    explicit Speaker(Bytes words) {
        fuzz::expect(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) == 0,
                     "a pair of sockets");
        const auto sent = ::send(ends_[1], words.data(), words.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        fuzz::expect(sent == static_cast<ssize_t>(words.size()), "the words fit into the socket");
        ::shutdown(ends_[1], SHUT_WR);
    }
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;
    ~Speaker() { ::close(ends_[1]); }

    std::unique_ptr<ByteLink> link() {
        return std::make_unique<ByteLink>(ends_[0], std::stop_token());
    }

  private:
    int ends_[2] = {-1, -1};
};

const PairRecord& recordOfThisComputer() {
    static const PairRecord kRecord{"HOST", "BUID", hostIdentity().certificate,
                                    hostIdentity().privateKey};
    return kRecord;
}

void lookAt(const AMDeviceValue& value) {
    const Text text = value.text();
    fuzz::expect(!text || isValidUtf8(*text), "texts are UTF-8");
    (void)value.dictionary().dictionaries();
}

/// Asks in turn until the device has said everything.
void talk(Bytes words) {
    Speaker device(words);
    LockdownClient client(device.link(), {std::chrono::seconds(5), kAnswerBytes});
    AMDStatus status = client.queryType();
    for (std::size_t turn = 0; !client.spent(); ++turn) {
        // An answer takes at least the four bytes of its length.
        fuzz::expect(turn <= words.size() / 4, "more answers than the device gave");
        PropertyList answer;
        switch (turn % 4) {
            case 0:
                status = client.startSession(recordOfThisComputer());
                break;
            case 3:
                status = client.stopSession();
                break;
            default:
                status = client.getValue(turn % 4 == 1 ? "domain" : nullptr,
                                         turn % 4 == 1 ? nullptr : "key", answer);
                fuzz::expect(status != kAMDSuccess || answer.text("Request") == "GetValue",
                             "another request's answer");
                if (status == kAMDSuccess) lookAt(AMDeviceValue(answer));
        }
        fuzz::expect(status != kAMDTimedOut, "waits for what cannot come");
    }
    fuzz::expect(!describeStatus(status).empty(), "every status has words");
}

void listen(Bytes words) {
    Speaker daemon(words);
    PropertyList answer;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    const AMDStatus status =
        MuxClient::receiveAnswer(*daemon.link(), kAnswerBytes, deadline, answer);
    fuzz::expect(status != kAMDTimedOut, "waits for what cannot come");
    const auto devices = MuxClient::devicesIn(answer);
    fuzz::expect(devices.size() <= MuxClient::kMostDevices, "more devices than are looked at");
    fuzz::expect(status == kAMDSuccess || devices.empty(), "devices without an answer");
}

}  // namespace

SALVOR_FUZZ_TARGET(lockdown) {
    if (input.empty()) return;
    const Bytes words = input.subspan(1);
    if (input[0] % 4 == 3) return listen(words);
    if (input[0] % 2 == 0) return talk(words);
    const auto record = PairRecord::parse(words);
    if (!record) return;
    // The texts of the record are taken for keys before the device is spoken to.
    Speaker silent({});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    fuzz::expect(silent.link()->startTls(*record, deadline) == kAMDTlsFailed,
                 "no session without a device");
}
