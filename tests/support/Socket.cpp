#include "tests/support/Socket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace salvor {
namespace {

/// Whoever signed the certificate: which one it is, is looked at after the handshake.
int acceptAny(int, X509_STORE_CTX*) {
    return 1;
}

tls::Context contextFor(const Identity& own, bool onlyTls1) {
    tls::Context context(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    if (onlyTls1) SSL_CTX_set_max_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT,
                       &acceptAny);
    SSL_CTX_use_certificate(context.get(), tls::certificateOf(own.certificate).get());
    SSL_CTX_use_PrivateKey(context.get(), tls::privateKeyOf(own.privateKey).get());
    return context;
}

}  // namespace

Socket::Socket(const std::filesystem::path& path)
    : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    constexpr int kWaiting = 64;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    if (::bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(fd_, kWaiting) != 0)
        throw std::system_error(errno, std::generic_category(), path.string());
}

Socket::~Socket() {
    tls_.reset();
    ::close(fd_);
}

std::shared_ptr<Socket> Socket::accept() const {
    const int fd = ::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
    return fd < 0 ? nullptr : std::make_shared<Socket>(fd);
}

bool Socket::send(std::string_view bytes) {
    if (tls_) return SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
    while (!bytes.empty()) {
        const auto count = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::string> Socket::receive(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t at = 0; at < size;) {
        const auto count = tls_ ? SSL_read(tls_.get(), &bytes[at], static_cast<int>(size - at))
                                : ::recv(fd_, &bytes[at], size - at, 0);
        if (count <= 0) return std::nullopt;
        at += static_cast<std::size_t>(count);
    }
    return bytes;
}

void Socket::hangUp() const {
    ::shutdown(fd_, SHUT_RDWR);
}

bool Socket::startTls(const Identity& own, const std::string& peerCertificate, bool onlyTls1) {
    tls::Session session(SSL_new(contextFor(own, onlyTls1).get()));
    SSL_set_fd(session.get(), fd_);
    if (SSL_accept(session.get()) != 1) return false;
    const tls::Certificate shown(SSL_get1_peer_certificate(session.get()));
    const auto expected = tls::certificateOf(peerCertificate);
    if (!shown || !expected || X509_cmp(shown.get(), expected.get()) != 0) return false;
    tls_ = std::move(session);
    return true;
}

void Socket::stopTls() {
    if (tls_) SSL_shutdown(tls_.get());
    tls_.reset();
}

}  // namespace salvor
