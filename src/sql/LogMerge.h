#pragma once

#include <filesystem>
#include <string>

namespace salvor {

/// Writes the write-ahead log that lies beside a private copy of a database ("NAME-wal") into it
/// and removes the log; what SQLite takes for no part of the log is left out. Never for a file of
/// a backup. Returns "" or the cause of the failure.
std::string mergeLog(const std::filesystem::path& copy);

}  // namespace salvor
