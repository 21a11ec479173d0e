// A category's whole way, with the input as every database of the backup: live rows, carving,
// merge, grouping and the report. Byte 73, which SQLite keeps for later, chooses the category and
// the version of the device.
#include <nlohmann/json.hpp>

#include "backup/extraction/CategoryDatabases.h"
#include "backup/extraction/LiveCategories.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "report/ScanReport.h"
#include "scan/ScanState.h"
#include "services/ServiceMakers.h"

using namespace salvor;

namespace {

/// A backup that has one file under every stored name, and none of its own.
class OneFile : public BackupFiles {
  public:
    explicit OneFile(std::filesystem::path file) : file_(std::move(file)) {}

    FileFacts find(const std::string& storedName) const override {
        const auto place = file_.parent_path() / storedName;
        std::error_code thereAlready;
        std::filesystem::create_hard_link(file_, place, thereAlready);
        return factsOf(place);
    }
    BackupFile open(const std::string& storedName) const override {
        const FileFacts facts = find(storedName);
        return {facts.state, facts.place, nullptr};
    }
    BackupFile own(const std::string& name) const override { return none()->own(name); }
    std::unique_ptr<StoredFileList> list() const override { return none()->list(); }
    std::optional<std::string> storedNameAt(const std::filesystem::path& place) const override {
        if (place.parent_path() != file_.parent_path()) return std::nullopt;
        return place.filename().string();
    }
    std::uint64_t totalBytes() const override { return find("input").size; }

  private:
    std::filesystem::path file_;
};

}  // namespace

SALVOR_FUZZ_TARGET(category_services) {
    constexpr std::size_t kChoice = 73;
    constexpr std::int32_t kOldest = 4;
    constexpr std::size_t kVersions = 6;
    if (input.size() <= kChoice) return;
    const auto& category = categories()[input[kChoice] % kCategoryCount];
    const fuzz::InputFile file(input);
    ScanState state;
    state.RecoverType = 1;
    state.recoverySignatures = fuzz::shippedSignatures();
    state.BACKUP_DIRECTORY = file.path().parent_path().string();
    state.setBackupFiles(std::make_shared<OneFile>(file.path()));
    state.deviceInfo.iOSMajorVersion =
        kOldest + static_cast<std::int32_t>(input[kChoice] / kCategoryCount % kVersions);
    state.deviceInfo.BackupLocation = state.BACKUP_DIRECTORY;
    setupDataBase(state);
    readLiveRows(category, state, {});
    const auto service = builtServices().at(category.service)(state, state.deviceInfo);
    service->RecoverFromIOSBackup(state.deviceInfo);
    fuzz::expect(nlohmann::json::accept(ScanReport::text(state)), "the report is JSON");
}
