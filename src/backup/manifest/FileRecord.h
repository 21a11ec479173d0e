#pragma once

#include <optional>

#include "scan/BackupIndex.h"
#include "util/Bytes.h"

namespace salvor {

/// The metadata of a file in Manifest.db: an MBFile object in a keyed archive. Texts, data and
/// numbers may be given in every way an archiver knows; the wrapped key may lack its class, which
/// "ProtectionClass" then tells. Nothing when it is no such archive.
std::optional<EntryDetails> readFileRecord(Bytes archive);

}  // namespace salvor
