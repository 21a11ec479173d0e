#include "tests/support/Identity.h"

#include <stdexcept>

#include "device/TlsObjects.h"

namespace salvor {
namespace {

using tls::Certificate;
using tls::MemoryBio;
using tls::PrivateKey;

void require(bool done) {
    if (!done) throw std::runtime_error("a test identity cannot be made");
}

template <class Write>
std::string pem(Write write) {
    const MemoryBio bio(BIO_new(BIO_s_mem()));
    require(bio && write(bio.get()) == 1);
    char* text = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

std::string oldPublicKey(EVP_PKEY* key) {
    unsigned char* der = nullptr;
    const int size = i2d_PublicKey(key, &der);
    require(size > 0);
    std::string text = pem(
        [&](BIO* bio) { return PEM_write_bio(bio, "RSA PUBLIC KEY", "", der, size) > 0 ? 1 : 0; });
    OPENSSL_free(der);
    return text;
}

Certificate selfSigned(EVP_PKEY* key) {
    constexpr long kYear = 365L * 24 * 3600;
    Certificate made(X509_new());
    require(X509_gmtime_adj(X509_getm_notBefore(made.get()), -kYear) != nullptr &&
            X509_gmtime_adj(X509_getm_notAfter(made.get()), kYear) != nullptr &&
            X509_set_pubkey(made.get(), key) == 1 && X509_sign(made.get(), key, EVP_sha256()) > 0);
    return made;
}

Identity makeIdentity() {
    const PrivateKey key(EVP_RSA_gen(2048));
    require(key != nullptr);
    const Certificate certificate = selfSigned(key.get());
    const auto writeKey = [&](BIO* bio) {
        return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    };
    const auto writeCertificate = [&](BIO* bio) {
        return PEM_write_bio_X509(bio, certificate.get());
    };
    return {pem(writeKey), oldPublicKey(key.get()), pem(writeCertificate)};
}

}  // namespace

const Identity& hostIdentity() {
    static const Identity kHost = makeIdentity();
    return kHost;
}

const Identity& deviceIdentity() {
    static const Identity kDevice = makeIdentity();
    return kDevice;
}

}  // namespace salvor
