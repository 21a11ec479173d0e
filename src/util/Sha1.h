#pragma once

#include <string>
#include <string_view>

#include "util/Bytes.h"

namespace salvor {

/// SHA-1 as the stored names of a backup use it: 20 bytes, written as 40 lower-case hexadecimal
/// digits. An empty text when the cryptographic library refuses the algorithm.
class Sha1 {
  public:
    static std::string hexDigest(Bytes data);
    static std::string hexDigest(std::string_view text);
};

}  // namespace salvor
