#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "engine_events.h"
#include "literal_buffer.h"
#include "literal_pattern.h"

namespace salvor::reference {

struct LiteralOptions {
    bool fullSearch = false;
    bool callList = false;
    bool deduplicate = true;  ///< leave out rows whose row id was handed on before
};

/// The carving engine once more: slow, literal, with copied buffers and with exceptions for reads
/// past an end, so that it can be checked against the rules by reading. Holds nothing in common
/// with the real engine but the shape of a row.
std::vector<CarvedRow> carveLiterally(const std::vector<LiteralPattern>& patterns,
                                      const LiteralOptions& options, const Buffer& file,
                                      Events& events);

}  // namespace salvor::reference
