#include "app/SalvorAppDelegate.h"

#include <atomic>
#include <ctime>
#include <exception>
#include <utility>

#include "app/ScanFailure.h"
#include "app/SignatureFile.h"
#include "app/recovery/ServicesManagerRunner.h"
#include "backup/BackupInfoReader.h"
#include "backup/BackupSource.h"
#include "backup/BackupStore.h"
#include "backup/extraction/LiveCategories.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "live/DAOs.h"
#include "services/SearchPlan.h"

namespace salvor {
namespace {

std::atomic<SalvorAppDelegate*> theApplication{nullptr};

}  // namespace

SalvorAppDelegate::SalvorAppDelegate(ScanObserver* observer, ServicesFactory services)
    : makeServices_(services ? std::move(services) : makeServicesManagerRunner),
      workFolder_(std::make_unique<WorkFolder>()) {
    state_.observer = observer;
    DAOs::serveCalendarLookups(state_);
    theApplication = this;
}

SalvorAppDelegate::~SalvorAppDelegate() {
    if (scanThread_.joinable()) cancel();
    waitForScan();
    waitForSignatures();
    SalvorAppDelegate* self = this;
    theApplication.compare_exchange_strong(self, nullptr);
}

SalvorAppDelegate* SalvorAppDelegate::appDelegate() {
    return theApplication;
}

void SalvorAppDelegate::setWorkFolder(std::optional<std::filesystem::path> parent) {
    workFolder_ = std::make_unique<WorkFolder>(std::move(parent));
}

void SalvorAppDelegate::applicationDidFinishLaunching(
    const std::optional<std::filesystem::path>& signatures) {
    signatureThread_ = std::jthread([this, signatures] { loadRecoverySignatures(signatures); });
}

void SalvorAppDelegate::loadRecoverySignatures(
    const std::optional<std::filesystem::path>& signatures) {
    auto loaded = std::make_shared<SqLiteTableSignatures>();
    try {
        if (const auto file = findSignatureFile(signatures)) {
            const std::string trouble = loaded->loadSignatures(*file);
            if (!trouble.empty()) {
                state_.tellError("signatures file " + file->string() + ": " + trouble);
            }
        } else {
            state_.tellError("no signatures file was found; deleted records will not be recovered");
        }
    } catch (const std::exception& failure) {
        state_.tellError(std::string("the signatures could not be loaded: ") + failure.what());
    }
    state_.recoverySignatures = std::move(loaded);
    state_.signatureLoaded = true;
    state_.signatureLoaded.notify_all();
}

SourceChoice SalvorAppDelegate::chooseBackup(const std::filesystem::path& chosen) {
    const auto folder = BackupStore::resolve(chosen);
    if (!folder) return SourceChoice::Unusable;
    useBackup(state_, *folder);
    state_.RecoverType = 1;
    return getInfoFromBackup() ? SourceChoice::Ready : SourceChoice::MissingPropertyLists;
}

void SalvorAppDelegate::warnOfIndex() {
    if (const auto notice = indexNotice(*state_.backupFiles()); !notice.empty())
        state_.warn(notice);
}

bool SalvorAppDelegate::getInfoFromBackup() {
    return salvor::getInfoFromBackup(state_);
}

bool SalvorAppDelegate::getInfoFromDeviceOrBackup() {
    return devices_.isConnected() ? getInfoFromDevice() : getInfoFromBackup();
}

SourceChoice SalvorAppDelegate::MacRecovery(const std::filesystem::path& chosen,
                                            const dataTypeHolder& holder) {
    const SourceChoice choice = chooseBackup(chosen);
    if (choice == SourceChoice::Ready) exploreInBackground(holder);
    return choice;
}

void SalvorAppDelegate::continueToRecover(const dataTypeHolder& holder) {
    exploreInBackground(holder);
}

void SalvorAppDelegate::exploreInBackground(const dataTypeHolder& holder) {
    waitForScan();
    forgetCancel();
    state_.showScreen(Screen::Progress);
    scanThread_ = std::jthread([this, holder] { ExploreBackupDirectoryWithDataType(holder); });
}

void SalvorAppDelegate::waitForScan() {
    if (scanThread_.joinable()) scanThread_.join();
}

void SalvorAppDelegate::waitForSignatures() {
    if (signatureThread_.joinable()) signatureThread_.join();
}

void SalvorAppDelegate::ExploreBackupDirectoryWithDataType(const dataTypeHolder& holder) {
    services_.reset();
    workFolderFailure_.clear();
    scanFailure_.clear();
    auto end = ScanEnd::Done;
    std::string reason;
    try {
        end = explore(holder);
        if (end == ScanEnd::Cancelled) reason = "cancelled";
        if (end == ScanEnd::NoWorkFolder) reason = workFolderFailure_;
    } catch (const std::exception& failure) {
        scanFailure_ = state_.BACKUP_DIRECTORY + ": the scan ended early: " + failure.what();
        state_.report(describeFailure(failure));
        state_.tellError(scanFailure_);
        state_.isDoingRecovery = false;
        end = ScanEnd::Failed;
        reason = failure.what();
    }
    state_.endScan(end, reason);
}

ScanEnd SalvorAppDelegate::explore(const dataTypeHolder& holder) {
    state_.run.dataType = holder.dataType;
    state_.run.startedAt = std::time(nullptr);
    state_.run.complete = false;
    CategoryExtraction extraction(state_, workFolder_.get(), stopToken());
    state_.IsCancelFlag = false;
    // A cancel that came first stays; see `cancel` for the other half.
    if (cancelRequested()) state_.IsCancelFlag = true;
    warnOfIndex();
    extraction.prepare(holder.dataType);
    state_.progress.bytesTotal = bytesToSearch(state_, holder.dataType);
    state_.showScreen(Screen::Progress);
    state_.selectTab(holder.dataType);
    const ExtractionResult result = extraction.read(holder.dataType);
    workFolderFailure_ = extraction.failure();
    if (result == ExtractionResult::NoWorkFolder) return ScanEnd::NoWorkFolder;
    if (result == ExtractionResult::Complete) recoverDeleted(holder.dataType);
    if (result == ExtractionResult::Cancelled || cancelRequested()) return ScanEnd::Cancelled;
    state_.run.complete = true;
    return ScanEnd::Done;
}

void SalvorAppDelegate::recoverDeleted(std::int32_t dataType) {
    state_.updateStatus(StatusCode::Result, "Recovering deleted data. Please wait...");
    clearDeletedLists(state_);
    state_.isDoingRecovery = true;
    services_ = makeServices_(state_);
    recoveryWindowController_.RecoverDeletedData(dataType, state_, *services_, stopToken());
    // A file that no carver can open is done as well.
    if (!cancelRequested()) state_.progress.bytesDone = state_.progress.bytesTotal.load();
}

void SalvorAppDelegate::cancel() {
    // The flag comes last, so that a scan which clears it meanwhile sees the request.
    cancel_.request();
    state_.IsCancelFlag = true;
}

void SalvorAppDelegate::forgetCancel() {
    cancel_.renew();
    devices_.heedCancel();
}

}  // namespace salvor
