#include "tools/sample/SampleKeys.h"

#include <memory>
#include <openssl/evp.h>
#include <stdexcept>

namespace salvor {
namespace {

constexpr std::uint32_t kRounds = 10'000;
constexpr std::size_t kKeyBytes = 32;

unsigned char* bytesOf(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}
const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

void require(bool holds) {
    if (!holds) throw std::runtime_error("the cryptographic library refuses");
}

std::string derive(const std::string& password, const std::string& salt, std::uint32_t rounds,
                   const EVP_MD* digest) {
    std::string key(kKeyBytes, '\0');
    require(PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), bytesOf(salt),
                              static_cast<int>(salt.size()), static_cast<int>(rounds), digest,
                              static_cast<int>(key.size()), bytesOf(key)) == 1);
    return key;
}

std::string encrypted(const EVP_CIPHER* cipher, const std::string& key, std::string_view bytes) {
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                             EVP_CIPHER_CTX_free);
    require(context != nullptr);
    const bool wraps = EVP_CIPHER_get_mode(cipher) == EVP_CIPH_WRAP_MODE;
    EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    const unsigned char zeros[16]{};
    std::string out(bytes.size() + 32, '\0');
    int first = 0;
    int last = 0;
    require(EVP_EncryptInit_ex(context.get(), cipher, nullptr, bytesOf(key),
                               wraps ? nullptr : zeros) == 1 &&
            EVP_EncryptUpdate(context.get(), bytesOf(out), &first, bytesOf(bytes),
                              static_cast<int>(bytes.size())) == 1 &&
            EVP_EncryptFinal_ex(context.get(), bytesOf(out) + first, &last) == 1);
    out.resize(static_cast<std::size_t>(first + last));
    return out;
}

std::string bigEndian(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes +=
            static_cast<char>(static_cast<unsigned char>(value >> static_cast<unsigned>(shift)));
    return bytes;
}

std::string item(const char* tag, const std::string& value) {
    return tag + bigEndian(value.size()) + value;
}

}  // namespace

SampleKeys::SampleKeys(std::uint64_t seed, const std::string& password,
                       std::optional<std::uint32_t> firstRounds)
    : random_(seed + 4711) {
    constexpr std::size_t kSalt = 20;
    const std::string salt = bytes(kSalt);
    const std::string firstSalt = bytes(kSalt);
    bag_ = item("VERS", bigEndian(3)) + item("TYPE", bigEndian(1)) + item("UUID", bytes(16)) +
           item("HMCK", bytes(40)) + item("WRAP", bigEndian(0)) + item("SALT", salt) +
           item("ITER", bigEndian(kRounds));
    std::string secret = password;
    if (firstRounds) {
        bag_ += item("DPWT", bigEndian(1)) + item("DPIC", bigEndian(*firstRounds)) +
                item("DPSL", firstSalt);
        secret = derive(secret, firstSalt, *firstRounds, EVP_sha256());
    }
    const std::string key = derive(secret, salt, kRounds, EVP_sha1());
    // The classes of the keychain stand in every bag; those bound to the device open nowhere else.
    constexpr std::size_t kClasses = 11;
    for (std::size_t number = 1; number <= kClasses; ++number) {
        const bool bound = number > 8;
        const std::string own = bytes(kKeyBytes);
        if (number <= std::size(classKeys_)) classKeys_[number - 1] = own;
        bag_ += item("UUID", bytes(16)) + item("CLAS", bigEndian(number)) +
                item("WRAP", bigEndian(bound ? 3 : 2)) + item("KTYP", bigEndian(0)) +
                item("WPKY", bound ? bytes(40) : encrypted(EVP_aes_256_wrap(), key, own));
    }
}

std::string SampleKeys::bytes(std::size_t count) {
    std::string made;
    while (made.size() < count) made += static_cast<char>(random_.below(256));
    return made;
}

SampleKeys::FileKey SampleKeys::makeKey(std::uint8_t protectionClass) {
    FileKey made{bytes(kKeyBytes), {static_cast<char>(protectionClass), 0, 0, 0}};
    made.wrapped += encrypted(EVP_aes_256_wrap(), classKeys_[protectionClass - 1U], made.key);
    return made;
}

std::string SampleKeys::encrypt(const FileKey& key, std::string_view bytes) {
    return encrypted(EVP_aes_256_cbc(), key.key, bytes);
}

}  // namespace salvor
