#pragma once

#include <optional>

#include "backup/keys/Secret.h"

namespace salvor {

/// Unwraps a key by AES-256 key unwrap (RFC 3394, initial value A6 eight times). Nothing when its
/// check value is wrong or a length is none that such keys have.
std::optional<Secret> unwrapKey(Bytes wrapping, Bytes wrapped);

}  // namespace salvor
