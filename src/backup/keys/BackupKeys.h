#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stop_token>

#include "backup/keys/KeyDerivation.h"

namespace salvor {

/// The opened class keys of a backup. Any number of threads may ask.
class BackupKeys {
  public:
    explicit BackupKeys(std::map<std::uint32_t, Secret> classes) : classes_(std::move(classes)) {}

    /// The key of a file, or of the index, from its 44 bytes: the protection class in four bytes,
    /// little-endian, and the wrapped key. Nothing when the class is locked or the check fails.
    std::optional<Secret> open(Bytes classAndKey) const;

  private:
    std::map<std::uint32_t, Secret> classes_;
};

enum class Unlock {
    Open,
    WrongPassword,  ///< no class key fits
    Cancelled,
    TooManyRounds,  ///< of the derivation; nothing was tried
};

struct UnlockedKeys {
    Unlock result = Unlock::WrongPassword;
    std::shared_ptr<const BackupKeys> keys;  ///< null unless open
};

/// Most rounds of a derivation that are tried; ten times as many as any phone asks for.
inline constexpr std::uint64_t kMostRounds = 100'000'000;

/// Opens the class keys that the password opens. A class whose own key does not fit stays locked;
/// when that is so for every one of them, the password is wrong.
UnlockedKeys unlock(const KeyBag& bag, Bytes password, const std::stop_token& stop = {},
                    const RoundsWatch& watch = {});

}  // namespace salvor
