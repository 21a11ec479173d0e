#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "backup/keys/KeyBag.h"
#include "backup/keys/Secret.h"

namespace salvor {

/// Told of the rounds done and of all rounds, several times a second.
using RoundsWatch = std::function<void(std::uint64_t done, std::uint64_t all)>;

/// One block of PBKDF2 (RFC 8018) over HMAC with the digest ("SHA1", "SHA256"): `size` bytes, at
/// most those of the digest. `roundsDone` is told now and then how many rounds came since the last
/// time and ends the derivation by answering false. Nothing then, or when the library refuses.
std::optional<Secret> pbkdf2(const char* digest, Bytes password, Bytes salt, std::uint32_t rounds,
                             std::size_t size,
                             const std::function<bool(std::uint32_t)>& roundsDone);

/// The key of 32 bytes that `password` gives for `bag`: HMAC-SHA1 over the password, since iOS 10.2
/// over what HMAC-SHA256 makes of it first. Nothing when `stop` ends it or the library refuses.
std::optional<Secret> passwordKey(const KeyBag& bag, Bytes password, const std::stop_token& stop,
                                  const RoundsWatch& watch = {});

}  // namespace salvor
