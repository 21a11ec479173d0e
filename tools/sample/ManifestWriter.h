#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/sample/MbdbWriter.h"

namespace salvor {

/// The metadata of one entry as Manifest.db keeps it: an MBFile in a keyed archive. `inPlace`
/// writes key and link target themselves where others refer to an object that holds them.
std::string fileArchive(const MbdbRecord& record, bool inPlace);

/// Writes Manifest.db with a row for each record: file, folder or link by its mode. Both ways to
/// write keys and targets take turns.
void writeManifestDatabase(const std::filesystem::path& file,
                           const std::vector<MbdbRecord>& records);

}  // namespace salvor
