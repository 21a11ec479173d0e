#pragma once

#include <optional>
#include <string>

#include "util/Bytes.h"

namespace salvor {

/// Largest property list that is read. Those of big backups carry icons and stay far below.
constexpr std::size_t kMaxPropertyListBytes = std::size_t{64} << 20;
/// Deepest nesting and greatest number of values that are handed to the library, whose own walk
/// is recursive and which copies a value for each reference to it.
constexpr std::uint32_t kMaxPropertyListDepth = 64;
constexpr std::uint64_t kMaxPropertyListValues = 2'000'000;

/// Whether a binary property list ("bplist00", with its trailer) has a sound object table whose
/// tree stays within the limits. References are followed without recursion; a cycle is refused.
bool binaryPropertyListIsTame(Bytes data);

/// The same XML property list without comments, processing instructions and document type, so
/// that its nesting is what its tags say; nothing when a tag carries anything unexpected or a
/// limit is passed.
std::optional<std::string> tameXmlPropertyList(Bytes data);

}  // namespace salvor
