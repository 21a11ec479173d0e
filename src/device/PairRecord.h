#pragma once

#include <optional>
#include <string>

#include "util/Bytes.h"

namespace salvor {

/// What this computer and a device keep of each other once the device trusts it: identifiers and
/// PEM texts, as the multiplexer daemon stores them.
struct PairRecord {
    std::string hostID;
    std::string systemBUID;
    std::string certificate;  ///< of this computer
    std::string privateKey;

    /// Nothing when a part is missing or the bytes are no property list.
    static std::optional<PairRecord> parse(Bytes data);
};

}  // namespace salvor
