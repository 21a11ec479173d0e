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
constexpr std::uint64_t kMaxPropertyListValues = 400'000;
/// Most keys of one dictionary in XML: each is looked for among the earlier ones, in a list when
/// it is there already.
constexpr std::uint32_t kMaxPropertyListKeys = 10'000;
/// Most bytes that are moved while entities are replaced: each moves the text behind it.
constexpr std::uint64_t kMaxPropertyListMoves = std::uint64_t{1} << 35;

/// Whether a binary property list ("bplist00", with its trailer) has a sound object table whose
/// tree, every reference to a value counted as a copy, stays within the limits of depth and values
/// and a small multiple of its own size. References are followed without recursion; a cycle is
/// refused.
bool binaryPropertyListIsTame(Bytes data);

/// The same XML property list without comments, processing instructions and document type, so
/// that its nesting is what its tags say; nothing when a tag carries anything unexpected or a
/// limit is passed.
std::optional<std::string> tameXmlPropertyList(Bytes data);

}  // namespace salvor
