#pragma once

#include "scan/ScanState.h"

namespace salvor {

/// Stored name of the notes store of iOS 9 and later, which has no field of its own.
inline constexpr auto kNotesStoreIOS9 = "4f98687d8ab0d6d1a371110e6b7300f6e465bef2";

/// Fills the database-name fields of `state` from the iOS version of its device and from the
/// presence of the first WhatsApp database in its backup folder.
void setupDataBase(ScanState& state);

}  // namespace salvor
