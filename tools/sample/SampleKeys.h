#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/sample/SampleRandom.h"

namespace salvor {

/// The keys of a sample backup with a password: a key bag as phones write it, and files encrypted
/// under it. Written apart from what the program reads, so that it tests that.
class SampleKeys {
  public:
    /// The password is derived by both steps, the first of `firstRounds`, or without one, as before
    /// iOS 10.2, by the second alone.
    SampleKeys(std::uint64_t seed, const std::string& password,
               std::optional<std::uint32_t> firstRounds);

    /// "BackupKeyBag" of the manifest.
    const std::string& bag() const { return bag_; }

    struct FileKey {
        std::string key;  ///< 32 bytes
        std::string
            wrapped;  ///< 44: protection class, little-endian, and the key wrapped by its own
    };
    FileKey makeKey(std::uint8_t protectionClass);
    /// `bytes` under a file's key, padded.
    static std::string encrypt(const FileKey& key, std::string_view bytes);

  private:
    std::string bytes(std::size_t count);

    SampleRandom random_;
    std::string classKeys_[5];  ///< of the classes 1 to 5
    std::string bag_;
};

}  // namespace salvor
