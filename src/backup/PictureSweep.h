#pragma once

#include <string>

#include "app/state/ScanState.h"
#include "backup/WorkFolder.h"

namespace salvor {

/// Makes the work folder afresh and empties the photo and video lists and counters of `state`.
/// Returns "" or why there is no work folder; nothing is emptied then. No file of the backup is
/// looked at yet: the lists stay empty.
std::string sweepPictures(ScanState& state, WorkFolder& workFolder);

}  // namespace salvor
