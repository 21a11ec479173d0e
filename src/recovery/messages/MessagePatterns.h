#pragma once

#include <string>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "scan/ScanState.h"

namespace salvor {

/// All patterns of `table` of the message database; none without a signature.
TablePatterns messagePatterns(const ScanState& state, const std::string& table);

/// The patterns of `table` that support `version`. They replace the signature's own, so that a
/// later carver of the table sees no others: deliberate. Carvers of other categories run beside
/// this one, but a signature is touched by the workers of its own category alone, one after the
/// other, so nothing is locked here.
TablePatterns narrowedMessagePatterns(const ScanState& state, const std::string& table,
                                      const std::string& version);

}  // namespace salvor
