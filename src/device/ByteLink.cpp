#include "device/ByteLink.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "device/PairRecord.h"
#include "device/TlsObjects.h"

namespace salvor {
namespace {

/// How soon a cancel is noticed.
constexpr std::chrono::milliseconds kSlice{50};
constexpr std::size_t kChunk = std::size_t{1} << 16;

/// A client context that shows this computer's certificate; null when the record's PEM texts do
/// not fit together. Devices sign for themselves and old ones know TLS 1.0 alone, so neither
/// their certificate nor the strength of the method is asked for: what is read is no secret.
tls::Context contextFor(const PairRecord& record) {
    tls::Context context(SSL_CTX_new(TLS_client_method()));
    if (!context) return nullptr;
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_options(context.get(), SSL_OP_LEGACY_SERVER_CONNECT | SSL_OP_IGNORE_UNEXPECTED_EOF);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_NONE, nullptr);
    const auto certificate = tls::certificateOf(record.certificate);
    const auto key = tls::privateKeyOf(record.privateKey);
    if (!certificate || !key || SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1)
        return nullptr;
    return context;
}

}  // namespace

struct ByteLink::Tls {
    tls::Session session;
};

AMDStatus ByteLink::connect(const sockaddr* address, socklen_t size,
                            std::unique_ptr<ByteLink>& link, const std::stop_token& stop,
                            Deadline deadline) {
    const int fd = ::socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) return kAMDHungUp;
    link = std::make_unique<ByteLink>(fd, stop);
    while (::connect(fd, address, size) != 0) {
        if (errno == EINPROGRESS) {
            if (const AMDStatus waited = link->waitFor(POLLOUT, deadline)) return waited;
            int failed = 0;
            socklen_t length = sizeof failed;
            ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &failed, &length);
            return failed == 0 ? kAMDSuccess : kAMDHungUp;
        }
        if (errno != EAGAIN && errno != EINTR) return kAMDHungUp;
        // Somebody listens and takes nobody in.
        if (stop.stop_requested()) return kAMDCancelled;
        if (std::chrono::steady_clock::now() >= deadline) return kAMDTimedOut;
        std::this_thread::sleep_for(kSlice);
    }
    return kAMDSuccess;
}

ByteLink::ByteLink(int fd, std::stop_token stop) : fd_(fd), stop_(std::move(stop)) {
    ::fcntl(fd_, F_SETFL, ::fcntl(fd_, F_GETFL) | O_NONBLOCK);
}

ByteLink::~ByteLink() {
    tls_.reset();
    ::close(fd_);
}

AMDStatus ByteLink::waitFor(short events, Deadline deadline) const {
    for (;;) {
        if (stop_.stop_requested()) return kAMDCancelled;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return kAMDTimedOut;
        pollfd one{fd_, events, 0};
        const int ready = ::poll(&one, 1, static_cast<int>(std::min(left, kSlice).count()));
        if (ready > 0) return kAMDSuccess;
        if (ready < 0 && errno != EINTR) return kAMDHungUp;
    }
}

// Repeats a TLS operation until it is done: whichever way it wants to go first.
template <class Operation>
AMDStatus ByteLink::drive(Operation operation, Deadline deadline) {
    for (;;) {
        ERR_clear_error();
        const int done = operation(tls_->session.get());
        if (done > 0) return kAMDSuccess;
        const int reason = SSL_get_error(tls_->session.get(), done);
        if (reason != SSL_ERROR_WANT_READ && reason != SSL_ERROR_WANT_WRITE) return kAMDHungUp;
        const short wanted = reason == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT;
        if (const AMDStatus waited = waitFor(wanted, deadline)) return waited;
    }
}

AMDStatus ByteLink::startTls(const PairRecord& record, Deadline deadline) {
    const auto context = contextFor(record);
    if (!context) return kAMDTlsFailed;
    tls::Session session(SSL_new(context.get()));  // which keeps the context
    if (!session || SSL_set_fd(session.get(), fd_) != 1) return kAMDTlsFailed;
    tls_ = std::make_unique<Tls>(Tls{std::move(session)});
    const AMDStatus shaken = drive(&SSL_connect, deadline);
    return shaken == kAMDHungUp ? kAMDTlsFailed : shaken;
}

template <class Span, class OverTls, class InTheClear>
AMDStatus ByteLink::moveAll(Span data, Deadline deadline, short events, OverTls overTls,
                            InTheClear inTheClear) {
    while (!data.empty()) {
        std::size_t moved = 0;
        const auto move = [&](SSL* session) {
            return overTls(session, data.data(), data.size(), &moved);
        };
        if (tls_) {
            if (const AMDStatus failed = drive(move, deadline)) return failed;
        } else {
            if (const AMDStatus waited = waitFor(events, deadline)) return waited;
            // The flag is one of sending; receiving knows no signal.
            const auto count = inTheClear(fd_, data.data(), data.size(), MSG_NOSIGNAL);
            if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return kAMDHungUp;
            moved = count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        data = data.subspan(moved);
    }
    return kAMDSuccess;
}

AMDStatus ByteLink::sendAll(Bytes data, Deadline deadline) {
    return moveAll(data, deadline, POLLOUT, &SSL_write_ex, &::send);
}

AMDStatus ByteLink::receiveAll(std::span<std::uint8_t> data, Deadline deadline) {
    return moveAll(data, deadline, POLLIN, &SSL_read_ex, &::recv);
}

AMDStatus ByteLink::receiveBlock(std::size_t size, std::vector<std::uint8_t>& data,
                                 Deadline deadline) {
    while (size > 0) {
        const std::size_t begin = data.size();
        const std::size_t part = std::min(size, kChunk);
        data.resize(begin + part);
        if (const AMDStatus failed = receiveAll(std::span(data).subspan(begin), deadline))
            return failed;
        size -= part;
    }
    return kAMDSuccess;
}

}  // namespace salvor
