#pragma once

#include <memory>
#include <vector>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "reference/plain_pattern.h"

namespace salvor::fuzz {

/// The signatures that the program ships with, read once.
std::shared_ptr<SqLiteTableSignatures> shippedSignatures();

/// The same patterns as the reference engine takes them, in the same order.
std::vector<reference::PlainPattern> referencePatterns(const TablePatterns& patterns);

}  // namespace salvor::fuzz
