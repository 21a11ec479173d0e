#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

#include "scan/ScanState.h"

namespace salvor {

/// Rows that a person chose, by category code: serial numbers from 1 as the lists and a full
/// export show them, the live rows of a category first and its deleted ones after them.
using TickedSerials = std::map<std::int32_t, std::set<std::size_t>>;

/// Ticks exactly these rows and clears the tick of every other. Numbers without a row are passed
/// over. Videos follow the photos in the numbers of their category.
void tickRows(ScanState& state, const TickedSerials& ticked);

}  // namespace salvor
