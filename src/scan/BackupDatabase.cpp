#include "scan/BackupDatabase.h"

#include <utility>

namespace salvor {
namespace {

struct HeldDatabase {
    HeldDatabase(BackupFile held, SourcePolicy policy, std::stop_token cancelled,
                 std::shared_ptr<DatabaseWatch> watch)
        : file(std::move(held)),
          database(file.path.string(), policy, std::move(cancelled), std::move(watch)) {}

    BackupFile file;
    FMDBUtils database;
};

class OutcomeWatch : public DatabaseWatch {
  public:
    OutcomeWatch(ScanState& state, std::string storedName)
        : state_(state), storedName_(std::move(storedName)) {}

    void readingEnded(const ReadingEnd& end) override { state_.readingEnded(storedName_, end); }

  private:
    ScanState& state_;
    const std::string storedName_;
};

}  // namespace

std::shared_ptr<FMDBUtils> backupDatabase(ScanState& state, BackupFile file,
                                          std::stop_token cancelled) {
    auto watch = std::make_shared<OutcomeWatch>(state, file.path.filename().string());
    return backupDatabase(state, std::move(file), std::move(watch), std::move(cancelled));
}

std::shared_ptr<FMDBUtils> backupDatabase(const ScanState& state, BackupFile file,
                                          std::shared_ptr<DatabaseWatch> watch,
                                          std::stop_token cancelled) {
    const auto held = std::make_shared<HeldDatabase>(std::move(file), state.sourcePolicy,
                                                     std::move(cancelled), std::move(watch));
    return {held, &held->database};
}

}  // namespace salvor
