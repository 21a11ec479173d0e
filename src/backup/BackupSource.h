#pragma once

#include <filesystem>
#include <memory>

#include "scan/ScanState.h"

namespace salvor {

/// The files of the backup in `folder`; the one place that decides how they are reached. A folder
/// that is no backup has no files.
std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder);

/// Makes the backup in `folder` the source of the next scan.
void useBackup(ScanState& state, const std::filesystem::path& folder);

}  // namespace salvor
