#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

#include "carving/deep/RecoveryEngine.h"

namespace salvor {

/// The files of one database. Without a log or journal of its own name the one that lies beside the
/// database under its usual name is taken, where there is one.
struct RecoverySource {
    std::filesystem::path database;
    std::optional<std::filesystem::path> log;
    std::optional<std::filesystem::path> journal;
};

/// What became of a recovery.
struct RecoveryOutcome {
    std::string fault;  ///< "" or why nothing was searched, with the file
    std::vector<std::string> warnings;
    deep::Facts facts;
};

/// Recovers the deleted rows of a database file. The files are only read, and nothing is written
/// beside them.
RecoveryOutcome recoverFile(const RecoverySource& source, const deep::RecoveryOptions& options,
                            const deep::RowSink& sink, std::stop_token stop);

/// "main", "wal", "journal".
const char* fileName(ImageFile file);

}  // namespace salvor
