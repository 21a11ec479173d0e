#pragma once

#include <cstdint>
#include <string_view>

#include "util/Bytes.h"

namespace salvor {

/// The common data-start rule of carvers: only for the field "ZStandZAid" the index of the first
/// '-' in `text` (-1 without one) minus 10; -100, no correction, for every other field. Kept:
/// no-dash-is-eleven.
std::int32_t standardDataPosition(std::string_view field, Bytes text);

}  // namespace salvor
