#pragma once

#include <algorithm>
#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <string>

/// What OpenSSL makes, freed with its owner.
namespace salvor::tls {

template <auto Free>
struct FreedBy {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, FreedBy<&SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, FreedBy<&SSL_free>>;
using Certificate = std::unique_ptr<X509, FreedBy<&X509_free>>;
using PrivateKey = std::unique_ptr<EVP_PKEY, FreedBy<&EVP_PKEY_free>>;
using MemoryBio = std::unique_ptr<BIO, FreedBy<&BIO_free>>;

inline MemoryBio readerOf(const std::string& pem) {
    constexpr std::size_t kLongest = std::size_t{1} << 20;
    return MemoryBio(BIO_new_mem_buf(pem.data(), static_cast<int>(std::min(pem.size(), kLongest))));
}

/// Null when the text holds none; only its first megabyte is looked at.
inline Certificate certificateOf(const std::string& pem) {
    return Certificate(PEM_read_bio_X509(readerOf(pem).get(), nullptr, nullptr, nullptr));
}

/// The same. An encrypted key is refused: it would be asked about at the terminal.
inline PrivateKey privateKeyOf(const std::string& pem) {
    char noPassword[] = "";
    return PrivateKey(PEM_read_bio_PrivateKey(readerOf(pem).get(), nullptr, nullptr, noPassword));
}

}  // namespace salvor::tls
