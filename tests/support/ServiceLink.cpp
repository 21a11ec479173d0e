#include "tests/support/ServiceLink.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace salvor {
namespace {

using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
using Session = std::unique_ptr<SSL, decltype(&SSL_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using MemoryBio = std::unique_ptr<BIO, decltype(&BIO_free)>;

MemoryBio reader(const std::string& pem) {
    return {BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free};
}

Certificate certificateOf(const std::string& pem) {
    return {PEM_read_bio_X509(reader(pem).get(), nullptr, nullptr, nullptr), &X509_free};
}

/// Whoever signed the certificate: which one it is, is looked at after the handshake.
int acceptAny(int, X509_STORE_CTX*) {
    return 1;
}

Context contextFor(const Identity& own, bool onlyTls1) {
    Context context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    const Certificate certificate = certificateOf(own.certificate);
    const Key key(PEM_read_bio_PrivateKey(reader(own.privateKey).get(), nullptr, nullptr, nullptr),
                  &EVP_PKEY_free);
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    if (onlyTls1) SSL_CTX_set_max_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT,
                       &acceptAny);
    SSL_CTX_use_certificate(context.get(), certificate.get());
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    return context;
}

}  // namespace

struct ServiceLink::Tls {
    Context context;
    Session session;
};

ServiceLink::ServiceLink(const Socket& socket) : socket_(socket) {}
ServiceLink::~ServiceLink() = default;

bool ServiceLink::startTls(const Identity& own, const std::string& peerCertificate, bool onlyTls1) {
    Context context = contextFor(own, onlyTls1);
    Session session(SSL_new(context.get()), &SSL_free);
    SSL_set_fd(session.get(), socket_.fd());
    if (SSL_accept(session.get()) != 1) return false;
    const Certificate shown(SSL_get1_peer_certificate(session.get()), &X509_free);
    const Certificate expected = certificateOf(peerCertificate);
    if (!shown || !expected || X509_cmp(shown.get(), expected.get()) != 0) return false;
    tls_ = std::make_unique<Tls>(Tls{std::move(context), std::move(session)});
    return true;
}

void ServiceLink::stopTls() {
    if (tls_) SSL_shutdown(tls_->session.get());
    tls_.reset();
}

bool ServiceLink::send(std::string_view bytes) {
    if (!tls_) return socket_.send(bytes);
    return SSL_write(tls_->session.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
}

std::optional<std::string> ServiceLink::receive(std::size_t size) {
    if (!tls_) return socket_.receive(size);
    std::string bytes(size, '\0');
    for (std::size_t at = 0, count = 0; at < size; at += count) {
        if (SSL_read_ex(tls_->session.get(), bytes.data() + at, size - at, &count) != 1)
            return std::nullopt;
    }
    return bytes;
}

}  // namespace salvor
