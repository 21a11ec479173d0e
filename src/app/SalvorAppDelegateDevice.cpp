#include <algorithm>
#include <system_error>
#include <utility>

#include "app/DeviceSearch.h"
#include "app/SalvorAppDelegate.h"
#include "backup/BackupInfoReader.h"
#include "device/BackupFolderBridge.h"
#include "device/OpenDevice.h"

namespace salvor {
namespace {

struct ValueRow {
    Text DeviceInfo::*field;
    const char* key;
    bool onlyWhenPresent = false;
};

constexpr ValueRow kValues[] = {
    {&DeviceInfo::ProductVersion, "ProductVersion"},
    {&DeviceInfo::DeviceName, "DeviceName"},
    {&DeviceInfo::SerialNumber, "SerialNumber"},
    {&DeviceInfo::ProductType, "ProductType"},
    {&DeviceInfo::UniqueDeviceID, "UniqueDeviceID"},
    {&DeviceInfo::FirmwareVersion, "FirmwareVersion"},
    {&DeviceInfo::PhoneNumber, "PhoneNumber"},
    {&DeviceInfo::IMSI, "InternationalMobileSubscriberIdentity", true},
    {&DeviceInfo::IMEI, "InternationalMobileEquipmentIdentity", true},
    {&DeviceInfo::ICICD, "IntegratedCircuitCardIdentity", true},
};

}  // namespace

void SalvorAppDelegate::listenForDevices(MobileDeviceAccess& devices) {
    MobileDevice_ = &devices;
    devices.framework().endWith(stopToken());
    devices.setListener(this);
}

void SalvorAppDelegate::setFreshBackup(FreshBackupSettings settings,
                                       FreshBackupQuestions* questions) {
    freshBackup_ = std::move(settings);
    questions_ = questions;
}

void SalvorAppDelegate::deviceConnected(const std::shared_ptr<AMDevice>& device) {
    if (!device->deviceName()) return;
    deviceConnected_ = true;
    mDevice_ = device;
    if (state_.observer != nullptr) state_.observer->onDeviceConnected(true);
}

// Deliberate: the current device stays, and another that is attached still does not count.
void SalvorAppDelegate::deviceDisconnected(const std::shared_ptr<AMDevice>& device) {
    if (!device->deviceName()) return;
    state_.RecoverType = 1;
    state_.deviceInfo.Connected = false;
    deviceConnected_ = false;
    if (state_.observer != nullptr) state_.observer->onDeviceConnected(false);
}

bool SalvorAppDelegate::getInfoFromDevice() {
    state_.deviceInfo = resetDescription("N/A");
    if (deviceConnected_ && !MobileDevice_->devices().empty()) readDeviceValues();
    return finishDescription(state_);
}

void SalvorAppDelegate::readDeviceValues() {
    if (!mDevice_) {
        const auto& all = MobileDevice_->devices();
        const auto known = std::find_if(all.begin(), all.end(), [](const auto& one) {
            return one->deviceName() && one->udid();
        });
        if (known != all.end()) mDevice_ = *known;
    }
    DeviceInfo& device = state_.deviceInfo;
    device.Connected = true;
    std::optional<OpenDevice> open;
    if (mDevice_) open.emplace(*mDevice_);
    for (const auto& row : kValues) {
        Text text;
        if (open && open->inSession()) text = textOf(mDevice_->deviceValueForKey(row.key));
        if (text || !row.onlyWhenPresent) device.*row.field = std::move(text);
    }
    const auto folder = folderOfDeviceBackup(freshBackup_.root, device.UniqueDeviceID.value_or(""));
    state_.BACKUP_DIRECTORY = folder.string();
    readEncryptionOfDevice(device, folder);
}

bool SalvorAppDelegate::getInfoFromDeviceOrBackup() {
    return deviceConnected_ ? getInfoFromDevice() : getInfoFromBackup();
}

bool SalvorAppDelegate::BackupAgent(const std::string& udid,
                                    std::optional<dataTypeHolder> thenScan) {
    if (backupTask_ || MobileDevice_ == nullptr) return false;
    backupTarget_ = udid;
    backedUpDevice_ = mDevice_;
    scanAfterBackup_ = std::move(thenScan);
    startBackupTask();
    return true;
}

void SalvorAppDelegate::startBackupTask() {
    std::error_code failed;  // the helper says itself what is wrong with the folder
    std::filesystem::create_directories(freshBackup_.root, failed);
    auto* observer = state_.observer;
    if (observer != nullptr) observer->onBackupProgress(-1, "");  // nothing is told yet
    backupTask_ = std::make_unique<HelperTask>(
        freshBackup_.helper.wordsFor(backupTarget_, freshBackup_.root),
        [observer](const HelperProgress& progress) {
            if (observer != nullptr) observer->onBackupProgress(progress.percent, progress.line);
        },
        [this, &loop = MobileDevice_->framework().runLoop(),
         alive = std::weak_ptr(alive_)](const HelperResult& result) {
            loop.post([this, alive, result] {
                if (!alive.expired()) backupTaskEnded(result);
            });
        });
}

FreshBackup SalvorAppDelegate::waitForBackup() {
    while (backupTask_) {
        MobileDevice_->framework().runLoop().run(stopToken());
        if (!backupTask_ || !cancelRequested()) continue;
        backupTask_->cancel();
        MobileDevice_->framework().runLoop().run();
    }
    // It has done its work: the next backup or read is another one's to cancel.
    if (lastBackup_.end == FreshBackupEnd::Cancelled) forgetCancel();
    return lastBackup_;
}

void SalvorAppDelegate::backupTaskEnded(const HelperResult& result) {
    backupTask_.reset();
    const auto end = settleBackup(result);
    if (!end) {
        startBackupTask();
        return;
    }
    lastBackup_ = {*end, result, folderOfDeviceBackup(freshBackup_.root, backupTarget_)};
    MobileDevice_->framework().runLoop().stop();
    const bool complete = *end == FreshBackupEnd::Complete;
    if (!complete) {
        state_.showScreen(Screen::Main);
        return;
    }
    chooseFreshBackup(lastBackup_.folder);
    if (state_.observer != nullptr) state_.observer->onBackupComplete();
    if (!scanAfterBackup_) return;
    scanAfterBackup_->BackupLocation = lastBackup_.folder.string();
    exploreInBackground(*scanAfterBackup_);
}

// How the backup ended; nothing when the helper is to be started again.
std::optional<FreshBackupEnd> SalvorAppDelegate::settleBackup(const HelperResult& result) {
    if (result.cancelled) return FreshBackupEnd::Cancelled;
    if (!result.startFailure.empty()) return FreshBackupEnd::NotStarted;
    // What is described is the device that was backed up, not one that came meanwhile.
    const auto here = findDevice(*MobileDevice_, backupTarget_);
    mDevice_ = here ? here : backedUpDevice_;
    const bool described = getInfoFromDevice();
    if (cancelRequested()) return FreshBackupEnd::Cancelled;
    if (!described) {
        const bool goOn =
            questions_ != nullptr && questions_->continueAnyway(kMissingPropertyListsAfterBackup);
        return goOn ? FreshBackupEnd::Complete : FreshBackupEnd::MissingPropertyLists;
    }
    // Deliberate: 1 is the device's refusal, every other status a finished backup.
    if (result.exitStatus != 1) return FreshBackupEnd::Complete;
    if (questions_ != nullptr && questions_->tryAgain(kPasscodeQuestion, result.lastError))
        return std::nullopt;
    return cancelRequested() ? FreshBackupEnd::Cancelled : FreshBackupEnd::Refused;
}

void SalvorAppDelegate::chooseFreshBackup(const std::filesystem::path& folder) {
    state_.BACKUP_DIRECTORY = folder.string();
    state_.deviceInfo.BackupLocation = folder.string();
    state_.RecoverType = 0;
}

}  // namespace salvor
