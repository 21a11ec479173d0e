#include "scan/BackupDatabase.h"

#include <utility>

namespace salvor {
namespace {

struct HeldDatabase {
    HeldDatabase(BackupFile held, SourcePolicy policy, std::stop_token cancelled)
        : file(std::move(held)), database(file.path.string(), policy, std::move(cancelled)) {}

    BackupFile file;
    FMDBUtils database;
};

}  // namespace

std::shared_ptr<FMDBUtils> backupDatabase(const ScanState& state, BackupFile file,
                                          std::stop_token cancelled) {
    const auto held =
        std::make_shared<HeldDatabase>(std::move(file), state.sourcePolicy, std::move(cancelled));
    return {held, &held->database};
}

}  // namespace salvor
