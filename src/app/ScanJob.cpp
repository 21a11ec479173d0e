#include "app/ScanJob.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "app/Outputs.h"
#include "app/SalvorAppDelegate.h"
#include "app/Sources.h"
#include "backup/BackupSource.h"
#include "scan/Categories.h"

namespace salvor {
namespace {

constexpr std::string_view kAuto = "auto";

bool isNumber(std::string_view text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= 0;
}

// "X", "X.Y" or "X.Y.Z" in digits.
bool isVersion(std::string_view text) {
    for (;;) {
        const auto dot = text.find('.');
        if (!isNumber(text.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        text.remove_prefix(dot + 1);
    }
}

bool isUnknown(const DeviceInfo& device) {
    return device.iOSMajorVersion == 0 && device.iOSMinorVersion == 0;
}

void useVersion(DeviceInfo& device, const std::string& version) {
    device.ProductVersion = version;
    device.iOSMajorVersion = 0;
    device.iOSMinorVersion = 0;
    splitProductVersion(device);
}

void applyRequestedVersion(DeviceInfo& device, const ScanRequest& request,
                           const VersionFacts& facts) {
    if (!request.ios) return;
    if (*request.ios != kAuto) {
        useVersion(device, *request.ios);
    } else if (const Text known = facts.best(); known && isUnknown(device)) {
        useVersion(device, std::string(*known));
    }
}

ScanOutcome refused(ScanResult result, std::string message) {
    ScanOutcome outcome;
    outcome.result = result;
    outcome.message = std::move(message);
    return outcome;
}

// What is wrong with the request before anything is touched; `Done` when nothing is.
ScanOutcome examine(const ScanRequest& request, const std::filesystem::path& backup) {
    if (request.category != kEverything && !categoryOf(request.category)) {
        return refused(ScanResult::InvalidRequest,
                       "no category has the code " + std::to_string(request.category));
    }
    if (request.ios && *request.ios != kAuto && !isVersion(*request.ios)) {
        return refused(ScanResult::InvalidRequest, "\"" + *request.ios + "\" is no version");
    }
    if (!request.workFolder) return {};
    if (auto inside = whyInsideBackup(*request.workFolder, backup); !inside.empty())
        return refused(ScanResult::InvalidRequest, std::move(inside));
    std::string reason = WorkFolder(request.workFolder).refusal(backup);
    if (reason.empty()) return {};
    return refused(ScanResult::WorkFolderRefused, std::move(reason));
}

}  // namespace

ScanJob::ScanJob(ScanObserver& observer)
    : application_(std::make_unique<SalvorAppDelegate>(&observer)) {}

ScanJob::~ScanJob() = default;

ScanState& ScanJob::state() {
    return application_->state();
}

void ScanJob::cancel() {
    application_->cancel();
}

ScanOutcome ScanJob::runScan(const ScanRequest& request) {
    auto [backup, fault] = findBackupFolder(request.source);
    if (!fault.empty()) return refused(ScanResult::SourceUnusable, std::move(fault));
    ScanOutcome outcome = examine(request, backup);
    if (outcome.result != ScanResult::Done) return outcome;

    outcome.backup = backup;
    outcome.versions = readVersionFacts(backup);
    outcome.encrypted = outcome.versions.manifestSaysEncrypted && request.keys == nullptr;
    const SourceChoice choice =
        request.freshBackup ? SourceChoice::Ready : application_->chooseBackup(backup);
    if (choice == SourceChoice::Unusable) {
        outcome.result = ScanResult::SourceUnusable;
        outcome.message = findBackupFolder(backup).fault;
        return outcome;
    }
    if (choice == SourceChoice::MissingPropertyLists && !request.continueAnyway) {
        outcome.result = ScanResult::MissingPropertyLists;
        outcome.message = kMissingPropertyLists;
        return outcome;
    }
    if (request.keys != nullptr) useBackup(state(), backup, request.keys);
    applyRequestedVersion(state().deviceInfo, request, outcome.versions);
    const bool versionGiven = request.ios && *request.ios != kAuto;
    outcome.versionUnknown = !versionGiven && isUnknown(state().deviceInfo);

    if (request.picturesInPlace)
        application_->leavePicturesInPlace();
    else
        application_->setWorkFolder(request.workFolder);
    application_->applicationDidFinishLaunching(request.signatures);
    application_->ExploreBackupDirectoryWithDataType({request.category, backup.string()});
    application_->waitForSignatures();
    if (!application_->workFolderFailure().empty()) {
        outcome.result = ScanResult::WorkFolderRefused;
        outcome.message = application_->workFolderFailure();
    } else if (application_->cancelRequested()) {
        outcome.result = ScanResult::Cancelled;
    } else if (!application_->scanFailure().empty()) {
        outcome.result = ScanResult::Failed;
        outcome.message = application_->scanFailure();
    }
    return outcome;
}

ScanOutcome runScan(const ScanRequest& request, ScanObserver& observer) {
    return ScanJob(observer).runScan(request);
}

}  // namespace salvor
