#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "carving/format/DatabaseLayout.h"
#include "util/Bytes.h"

namespace salvor::deep {

/// What a stored text looks like.
struct TextTraits {
    bool valid = true;     ///< decodes in the database's encoding
    bool control = false;  ///< holds control characters other than tab and line ends
    std::uint32_t characters = 0;
    /// Lengths of its runs of letters and digits and the signs between them, as a hash; 0 for
    /// texts that are empty or longer than 64 characters.
    std::uint64_t skeleton = 0;
    std::uint8_t kinds = 0;  ///< which `CharacterKind`s occur
};

enum CharacterKind : std::uint8_t {
    kDigit = 1,
    kCapitalHex = 2,
    kCapital = 4,
    kSmallHex = 8,
    kSmall = 16,
    kWide = 32,
};

/// Without `shaped` skeleton and kinds may be left out, which is faster.
TextTraits textTraits(Bytes text, TextEncoding encoding, bool shaped = true);

/// The text as UTF-8; absent when it does not decode.
std::optional<std::string> toUtf8(Bytes text, TextEncoding encoding);

}  // namespace salvor::deep
