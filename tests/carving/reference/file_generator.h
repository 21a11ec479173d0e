#pragma once

#include <cstdint>
#include <vector>

#include "pattern_generator.h"
#include "plain_buffer.h"
#include "random_source.h"

namespace salvor::reference {

/// A file that no SQLite ever wrote: pages of random kind with records in their free space.
Buffer makeSyntheticFile(RandomSource& random, const std::vector<PlannedPattern>& patterns);

/// Flips bytes, cuts the file, changes the header's fields and the pages' pointers.
void damageFile(RandomSource& random, Buffer& file);

/// Stores `value` big-endian where the file reaches that far.
void store(Buffer& file, std::int64_t offset, std::int64_t length, std::uint64_t value);

}  // namespace salvor::reference
