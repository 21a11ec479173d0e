#include "scan/ScanState.h"

#include "scan/Categories.h"

namespace salvor {

ScanState::ScanState() = default;
ScanState::~ScanState() = default;

void ScanState::setBackupFiles(std::shared_ptr<const BackupFiles> files) {
    backupFiles_ = std::move(files);
    forgetOtherBackups();
}

void ScanState::addOtherBackup(std::shared_ptr<const BackupFiles> files) {
    const std::lock_guard lock(otherBackupsMutex_);
    otherBackups_.push_back(std::move(files));
}

void ScanState::forgetOtherBackups() {
    const std::lock_guard lock(otherBackupsMutex_);
    otherBackups_.clear();
}

std::pair<std::shared_ptr<const BackupFiles>, std::string> ScanState::listedIn(
    const std::filesystem::path& path) const {
    if (auto name = backupFiles_->storedNameAt(path)) return {backupFiles_, std::move(*name)};
    const std::lock_guard lock(otherBackupsMutex_);
    for (const auto& files : otherBackups_)
        if (auto name = files->storedNameAt(path)) return {files, std::move(*name)};
    return {};
}

BackupFile ScanState::openListed(const std::filesystem::path& path) const {
    const auto [files, name] = listedIn(path);
    if (files != nullptr) return files->open(name);
    return {BackupFiles::factsOf(path).state, path, nullptr};
}

FileFacts ScanState::findListed(const std::filesystem::path& path) const {
    const auto [files, name] = listedIn(path);
    if (files == nullptr) return BackupFiles::factsOf(path);
    auto facts = files->find(name);
    if (const auto date = files->indexedDate(name)) facts.modified = *date;
    return facts;
}

void ScanState::installDatabase(std::shared_ptr<FMDBUtils> dbUtils,
                                std::shared_ptr<DatabaseLookups> daos) {
    const std::lock_guard lock(databaseMutex_);
    dbUtils_.swap(dbUtils);
    daos_.swap(daos);
}

std::shared_ptr<FMDBUtils> ScanState::dbUtils() const {
    const std::lock_guard lock(databaseMutex_);
    return dbUtils_;
}

std::shared_ptr<DatabaseLookups> ScanState::daos() const {
    const std::lock_guard lock(databaseMutex_);
    return daos_;
}

void ScanState::updateStatus(StatusCode code, const std::string& text) {
    {
        const std::lock_guard lock(statusMutex_);
        statusHistory_.emplace_back(code, text);
    }
    if (observer != nullptr) observer->onStatus(code, text);
}

void ScanState::categoryRead(Category category) {
    if (observer != nullptr) observer->onCategoryRead(category);
}

void ScanState::categoryRecovered(Category category) {
    if (observer != nullptr) observer->onCategoryRecovered(category);
}

void ScanState::updateUIfoundRecoveredData() {
    if (observer != nullptr) observer->onRecoveredData();
}

void ScanState::UpdateMainView(View view) {
    if (observer != nullptr) observer->onMainView(view);
}

void ScanState::refreshTabButtons() {
    if (observer != nullptr) observer->onTabButtons();
}

void ScanState::selectTab(std::int32_t dataType) {
    if (observer != nullptr)
        observer->onTabSelected(categoryOf(dataType).value_or(Category::Photos));
}

void ScanState::enableTab(Category category) {
    if (observer != nullptr) observer->onTabEnabled(category);
}

void ScanState::showScreen(Screen screen) {
    if (observer != nullptr) observer->onScreen(screen);
}

void ScanState::endScan(ScanEnd end, const std::string& reason) {
    hasDoneScan = true;
    refreshTabButtons();
    showScreen(Screen::Main);
    if (observer != nullptr) observer->onScanEnded(end, reason);
}

void ScanState::warn(const std::string& text) {
    if (observer != nullptr) observer->onWarning(text);
}

void ScanState::tellError(const std::string& text) {
    if (observer != nullptr) observer->onError(text);
}

void ScanState::report(const std::string& lines) {
    if (observer != nullptr) observer->onReport(lines);
}

void ScanState::beginFiles(std::int32_t dataType) {
    for (const FileOutcome& fault : fileOutcomes.begin(*this, dataType)) tellError(describe(fault));
}

void ScanState::readingEnded(std::string_view storedName, const ReadingEnd& end) {
    if (const auto fault = fileOutcomes.add(storedName, end)) tellError(describe(*fault));
}

void ScanState::categoryFailed(Category category, const std::string& reason) {
    fileOutcomes.addFault(category, reason);
    tellError(std::string(factsOf(category).title) + ": " + reason);
}

std::vector<std::pair<StatusCode, std::string>> ScanState::statusHistory() const {
    const std::lock_guard lock(statusMutex_);
    return statusHistory_;
}

void ScanState::forgetStatuses() {
    const std::lock_guard lock(statusMutex_);
    statusHistory_.clear();
}

std::shared_ptr<DatabaseLookups> ScanState::openCalendarLookups() {
    return calendarLookupsFactory != nullptr ? calendarLookupsFactory(*this) : daos();
}

}  // namespace salvor
