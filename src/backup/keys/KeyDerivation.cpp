#include "backup/keys/KeyDerivation.h"

#include <algorithm>
#include <array>
#include <memory>
#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <string>

namespace salvor {
namespace {

constexpr std::size_t kKeyBytes = 32;
constexpr std::size_t kSha1Bytes = 20;
constexpr std::uint32_t kRoundsAtATime = 20'000;  // some milliseconds

/// HMAC under one key, whose state is kept from message to message.
class Hmac {
  public:
    Hmac(const char* digest, Bytes key)
        : mac_(EVP_MAC_fetch(nullptr, "HMAC", nullptr), EVP_MAC_free),
          context_(EVP_MAC_CTX_new(mac_.get()), EVP_MAC_CTX_free) {
        std::string name = digest;
        const std::array parameters{
            OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name.data(), name.size()),
            OSSL_PARAM_construct_end()};
        // An empty key is one all the same, which the library takes for none without an address.
        constexpr std::uint8_t kNoByte = 0;
        works_ =
            context_ != nullptr && EVP_MAC_init(context_.get(), key.empty() ? &kNoByte : key.data(),
                                                key.size(), parameters.data()) == 1;
    }

    /// The digest of both parts into `out`.
    bool digest(Bytes first, Bytes second, std::span<std::uint8_t> out) {
        std::size_t size = 0;
        works_ = works_ && (fresh_ || EVP_MAC_init(context_.get(), nullptr, 0, nullptr) == 1) &&
                 EVP_MAC_update(context_.get(), first.data(), first.size()) == 1 &&
                 EVP_MAC_update(context_.get(), second.data(), second.size()) == 1 &&
                 EVP_MAC_final(context_.get(), out.data(), &size, out.size()) == 1;
        fresh_ = false;
        return works_ && size <= out.size();
    }
    std::size_t size() const { return works_ ? EVP_MAC_CTX_get_mac_size(context_.get()) : 0; }

  private:
    std::unique_ptr<EVP_MAC, void (*)(EVP_MAC*)> mac_;
    std::unique_ptr<EVP_MAC_CTX, void (*)(EVP_MAC_CTX*)> context_;
    bool works_ = false;
    bool fresh_ = true;
};

/// Blocks `number`, from 1, of PBKDF2.
std::optional<Secret> block(Hmac& hmac, Bytes salt, std::uint8_t number, std::uint32_t rounds,
                            const std::function<bool(std::uint32_t)>& roundsDone) {
    Secret round(hmac.size());
    Secret sum(hmac.size());
    const std::array<std::uint8_t, 4> counter{0, 0, 0, number};
    if (!hmac.digest(salt, counter, round.writable())) return std::nullopt;
    std::copy(round.bytes().begin(), round.bytes().end(), sum.writable().begin());
    for (std::uint32_t done = 1; done < rounds;) {
        const std::uint32_t end = done + std::min(kRoundsAtATime, rounds - done);
        const std::uint32_t more = end - done;
        for (; done < end; ++done) {
            if (!hmac.digest(round.bytes(), {}, round.writable())) return std::nullopt;
            for (std::size_t i = 0; i < sum.size(); ++i) sum.writable()[i] ^= round.bytes()[i];
        }
        if (!roundsDone(more)) return std::nullopt;
    }
    return sum;
}

}  // namespace

std::optional<Secret> pbkdf2(const char* digest, Bytes password, Bytes salt, std::uint32_t rounds,
                             std::size_t size,
                             const std::function<bool(std::uint32_t)>& roundsDone) {
    Hmac hmac(digest, password);
    if (hmac.size() == 0 || rounds == 0) return std::nullopt;
    Secret key(size);
    std::uint8_t number = 0;
    for (std::size_t at = 0; at < size; at += hmac.size()) {
        const auto part = block(hmac, salt, ++number, rounds, roundsDone);
        if (!part || number == 255) return std::nullopt;
        const Bytes bytes = slice(part->bytes(), 0, size - at);
        std::copy(bytes.begin(), bytes.end(), key.writable().subspan(at).begin());
    }
    return key;
}

std::optional<Secret> passwordKey(const KeyBag& bag, Bytes password, const std::stop_token& stop,
                                  const RoundsWatch& watch) {
    // Of the digest of 20 bytes the 32 of the key take two blocks.
    const std::uint64_t blocks = (kKeyBytes + kSha1Bytes - 1) / kSha1Bytes;
    const std::uint64_t all =
        blocks * bag.iterations + (bag.hasFirstStep() ? bag.firstIterations : 0);
    std::uint64_t done = 0;
    const auto roundsDone = [&](std::uint32_t more) {
        done += more;
        if (watch) watch(done, all);
        return !stop.stop_requested();
    };
    const auto bytesOf = [](const std::string& text) {
        return Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    };
    if (!bag.hasFirstStep())
        return pbkdf2("SHA1", password, bytesOf(bag.salt), bag.iterations, kKeyBytes, roundsDone);
    const auto first = pbkdf2("SHA256", password, bytesOf(bag.firstSalt), bag.firstIterations,
                              kKeyBytes, roundsDone);
    if (!first) return std::nullopt;
    return pbkdf2("SHA1", first->bytes(), bytesOf(bag.salt), bag.iterations, kKeyBytes, roundsDone);
}

}  // namespace salvor
