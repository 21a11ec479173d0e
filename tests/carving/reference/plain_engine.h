#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "plain_buffer.h"
#include "plain_pattern.h"

namespace salvor::reference {

struct PlainOptions {
    bool fullSearch = false;
    bool callList = false;
    bool deduplicate = true;  ///< leave out rows whose row id was handed on before
};

/// The carving engine once more: slow, plain, with copied buffers and with exceptions for reads
/// past an end, so that it can be checked by reading. Holds nothing in common with the real engine
/// but the shape of a row.
std::vector<CarvedRow> carvePlainly(const std::vector<PlainPattern>& patterns,
                                    const PlainOptions& options, const Buffer& file);

}  // namespace salvor::reference
