#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/Bytes.h"

namespace salvor {

/// The key of one protection class as the key bag holds it.
struct WrappedClassKey {
    std::uint32_t protectionClass = 0;
    std::uint32_t wrap = 0;  ///< bit 1: bound to the device, bit 2: opened by the password
    std::string key;         ///< wrapped by RFC 3394

    bool byPassword() const { return (wrap & 2U) != 0; }
};

/// The keys of a backup ("BackupKeyBag" of Manifest.plist): items of a four-letter tag, a
/// big-endian length of four bytes and a value. The items of the bag come first; each further
/// "UUID" begins a class. Unknown tags are passed over, and items that leave the data end it.
struct KeyBag {
    std::string salt;                   ///< SALT
    std::uint32_t iterations = 0;       ///< ITER, rounds of HMAC-SHA1
    std::string firstSalt;              ///< DPSL; with DPIC, since iOS 10.2
    std::uint32_t firstIterations = 0;  ///< DPIC, rounds of HMAC-SHA256 that come before
    std::vector<WrappedClassKey> classes;

    /// Nothing when the data holds no key that a password opens, or no way to derive its key.
    static std::optional<KeyBag> parse(Bytes data);
    bool hasFirstStep() const { return firstIterations > 0 && !firstSalt.empty(); }
    std::uint64_t rounds() const {
        return std::uint64_t{iterations} + (hasFirstStep() ? firstIterations : 0);
    }
};

}  // namespace salvor
