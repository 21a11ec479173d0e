#include "device/ByteLink.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

#include "device/PairRecord.h"

namespace salvor {
namespace {

/// How soon a cancel is noticed.
constexpr std::chrono::milliseconds kSlice{50};

template <auto Free>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Freed<&SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, Freed<&SSL_free>>;
using Certificate = std::unique_ptr<X509, Freed<&X509_free>>;
using PrivateKey = std::unique_ptr<EVP_PKEY, Freed<&EVP_PKEY_free>>;
using MemoryBio = std::unique_ptr<BIO, Freed<&BIO_free>>;

MemoryBio readerOf(const std::string& pem) {
    constexpr std::size_t kLongest = std::size_t{1} << 20;
    return MemoryBio(BIO_new_mem_buf(pem.data(), static_cast<int>(std::min(pem.size(), kLongest))));
}

/// A client context that shows this computer's certificate; null when the record's PEM texts do
/// not fit together. Devices sign for themselves and old ones know TLS 1.0 alone, so neither
/// their certificate nor the strength of the method is asked for: what is read is no secret.
Context contextFor(const PairRecord& record) {
    Context context(SSL_CTX_new(TLS_client_method()));
    if (!context) return nullptr;
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_options(context.get(), SSL_OP_LEGACY_SERVER_CONNECT | SSL_OP_IGNORE_UNEXPECTED_EOF);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_NONE, nullptr);
    const Certificate certificate(
        PEM_read_bio_X509(readerOf(record.certificate).get(), nullptr, nullptr, nullptr));
    // An empty password, so that an encrypted key is refused instead of asked about.
    char noPassword[] = "";
    const PrivateKey key(
        PEM_read_bio_PrivateKey(readerOf(record.privateKey).get(), nullptr, nullptr, noPassword));
    if (!certificate || !key || SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1)
        return nullptr;
    return context;
}

std::size_t bounded(std::size_t size) {
    return std::min<std::size_t>(size, std::size_t{1} << 16);
}

}  // namespace

struct ByteLink::Tls {
    Context context;
    Session session;
};

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
    auto tls = std::make_unique<Tls>();
    tls->context = contextFor(record);
    if (!tls->context) return kAMDTlsFailed;
    tls->session.reset(SSL_new(tls->context.get()));
    if (!tls->session || SSL_set_fd(tls->session.get(), fd_) != 1) return kAMDTlsFailed;
    tls_ = std::move(tls);
    const AMDStatus shaken = drive(&SSL_connect, deadline);
    return shaken == kAMDHungUp ? kAMDTlsFailed : shaken;
}

AMDStatus ByteLink::sendAll(Bytes data, Deadline deadline) {
    while (!data.empty()) {
        std::size_t sent = 0;
        if (tls_) {
            const auto write = [&data, &sent](SSL* session) {
                return SSL_write_ex(session, data.data(), bounded(data.size()), &sent);
            };
            if (const AMDStatus failed = drive(write, deadline)) return failed;
        } else {
            if (const AMDStatus waited = waitFor(POLLOUT, deadline)) return waited;
            const auto count = ::send(fd_, data.data(), data.size(), MSG_NOSIGNAL);
            if (count < 0 && errno != EAGAIN && errno != EINTR) return kAMDHungUp;
            sent = count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        data = data.subspan(sent);
    }
    return kAMDSuccess;
}

AMDStatus ByteLink::receiveAll(std::span<std::byte> data, Deadline deadline) {
    while (!data.empty()) {
        std::size_t received = 0;
        if (tls_) {
            const auto read = [&data, &received](SSL* session) {
                return SSL_read_ex(session, data.data(), bounded(data.size()), &received);
            };
            if (const AMDStatus failed = drive(read, deadline)) return failed;
        } else {
            if (const AMDStatus waited = waitFor(POLLIN, deadline)) return waited;
            const auto count = ::recv(fd_, data.data(), data.size(), 0);
            if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return kAMDHungUp;
            received = count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        data = data.subspan(received);
    }
    return kAMDSuccess;
}

}  // namespace salvor
