#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "util/Bytes.h"
#include "util/FileCopy.h"

namespace salvor {

/// A file of an encrypted backup: AES-256 in CBC mode from an initialisation vector of zeros,
/// padded by PKCS 7 to blocks of 16 bytes. The padding alone tells the length: the size that an
/// index tells is wrong for some databases. Without sound padding the file is kept whole; bytes
/// behind the last whole block are none of it.
class FileCipher {
  public:
    /// `content` and `key` (32 bytes) must outlive the object.
    FileCipher(Bytes content, Bytes key) : content_(content), key_(key) {}

    /// The length of what is encrypted, in bytes; nothing when the library refuses the key.
    std::optional<std::uint64_t> size() const;
    /// Whether the padding is sound; an empty file has none and needs none.
    bool isSound() const;
    /// The first bytes, as many as there are and fit; returns how many.
    std::size_t readHead(std::span<std::uint8_t> head) const;
    /// Writes all of it to `target`, which must not be there yet and which its owner alone can
    /// read, on all cores. Without a date in the options it gets the present one.
    FileCopy decryptTo(const std::filesystem::path& target,
                       const FileCopyOptions& options = {}) const;
    /// Decrypts the whole blocks of `piece`, which follows the block before it in the file.
    static bool decrypt(Bytes key, Bytes blockBefore, Bytes piece, std::span<std::uint8_t> out);

  private:
    std::size_t wholeBlocks() const;
    std::optional<std::size_t> padding() const;

    Bytes content_;
    Bytes key_;
};

}  // namespace salvor
