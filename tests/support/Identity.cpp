#include "tests/support/Identity.h"

#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <stdexcept>

namespace salvor {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using MemoryBio = std::unique_ptr<BIO, decltype(&BIO_free)>;

void require(bool done) {
    if (!done) throw std::runtime_error("a test identity cannot be made");
}

template <class Write>
std::string pem(Write write) {
    const MemoryBio bio(BIO_new(BIO_s_mem()), &BIO_free);
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

Certificate selfSigned(EVP_PKEY* key, const std::string& name) {
    Certificate made(X509_new(), &X509_free);
    constexpr long kYear = 365L * 24 * 3600;
    X509_NAME* subject = X509_get_subject_name(made.get());
    const auto* common = reinterpret_cast<const unsigned char*>(name.c_str());
    require(X509_set_version(made.get(), 2) == 1 &&
            ASN1_INTEGER_set(X509_get_serialNumber(made.get()), 1) == 1 &&
            X509_gmtime_adj(X509_getm_notBefore(made.get()), -kYear) != nullptr &&
            X509_gmtime_adj(X509_getm_notAfter(made.get()), kYear) != nullptr &&
            X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, common, -1, -1, 0) == 1 &&
            X509_set_issuer_name(made.get(), subject) == 1 &&
            X509_set_pubkey(made.get(), key) == 1 && X509_sign(made.get(), key, EVP_sha256()) > 0);
    return made;
}

}  // namespace

Identity makeIdentity(const std::string& name) {
    const Key key(EVP_RSA_gen(2048), &EVP_PKEY_free);
    require(key != nullptr);
    const Certificate certificate = selfSigned(key.get(), name);
    return {pem([&](BIO* bio) {
                return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr,
                                                nullptr);
            }),
            oldPublicKey(key.get()),
            pem([&](BIO* bio) { return PEM_write_bio_X509(bio, certificate.get()); })};
}

const Identity& hostIdentity() {
    static const Identity kHost = makeIdentity("host");
    return kHost;
}

const Identity& deviceIdentity() {
    static const Identity kDevice = makeIdentity("device");
    return kDevice;
}

}  // namespace salvor
