#pragma once

#include "scan/ScanState.h"

namespace salvor {

/// Fills the database-name fields of `state` from the iOS version of its device and from the
/// presence of the first WhatsApp database in its backup folder.
void setupDataBase(ScanState& state);

}  // namespace salvor
