#pragma once

#include <memory>
#include <vector>

#include "carving/SqLiteTableSignatures.h"
#include "reference/literal_signatures.h"

namespace salvor::fuzz {

/// The signatures that the program ships with, read once.
std::shared_ptr<SqLiteTableSignatures> shippedSignatures();

/// The same as the literal engine reads them, in the same order.
const std::vector<reference::LiteralSignature>& literalSignatures();

}  // namespace salvor::fuzz
