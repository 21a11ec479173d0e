#include "app/DeviceSource.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "app/DeviceSearch.h"
#include "backup/BackupInfoReader.h"
#include "backup/BackupSource.h"
#include "device/BackupFolderBridge.h"
#include "device/OpenDevice.h"
#include "util/StringUtils.h"

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

DeviceSource::DeviceSource(ScanState& state, CancelSource& cancel, StartScan startScan)
    : state_(state), cancel_(cancel), startScan_(std::move(startScan)) {}

DeviceSource::~DeviceSource() {
    task_.reset();
    if (MobileDevice_ != nullptr) MobileDevice_->setListener(nullptr);
}

void DeviceSource::listenFor(MobileDeviceAccess& devices) {
    MobileDevice_ = &devices;
    heedCancel();
    devices.setListener(this);
}

void DeviceSource::heedCancel() {
    if (MobileDevice_ != nullptr) MobileDevice_->framework().endWith(cancel_.token());
}

void DeviceSource::setFreshBackup(FreshBackupSettings settings, FreshBackupQuestions* questions) {
    settings_ = std::move(settings);
    questions_ = questions;
}

void DeviceSource::deviceConnected(const std::shared_ptr<AMDevice>& device) {
    if (!device->deviceName()) return;
    connected_ = true;
    mDevice_ = device;
    if (state_.observer != nullptr) state_.observer->onDeviceConnected(true);
}

// Also for another device than the current one, which stays. Kept: any-device-leaves.
void DeviceSource::deviceDisconnected(const std::shared_ptr<AMDevice>& device) {
    if (task_ &&
        StringUtils::lowerCase(device->udid().value_or("")) == StringUtils::lowerCase(target_))
        unplugged_ = true;
    if (!device->deviceName()) return;
    state_.RecoverType = 1;
    state_.deviceInfo.Connected = false;
    connected_ = false;
    if (state_.observer != nullptr) state_.observer->onDeviceConnected(false);
}

bool DeviceSource::getInfoFromDevice() {
    return describe(connected_);
}

bool DeviceSource::describe(bool connected) {
    state_.deviceInfo = resetDescription("N/A");
    if (connected && !MobileDevice_->devices().empty()) readValues();
    return finishDescription(state_);
}

void DeviceSource::readValues() {
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
    const auto folder = folderOfDeviceBackup(settings_.root, device.UniqueDeviceID.value_or(""));
    useBackup(state_, folder);
    readEncryptionOfDevice(device, *state_.backupFiles());
}

bool DeviceSource::BackupAgent(const std::string& udid, std::optional<dataTypeHolder> thenScan) {
    if (task_ || MobileDevice_ == nullptr) return false;
    target_ = udid;
    const auto device = findDevice(*MobileDevice_, udid);
    targetName_ = device ? device->deviceName().value_or(udid) : udid;
    backedUp_ = mDevice_;
    scanAfter_ = std::move(thenScan);
    startTask();
    return true;
}

void DeviceSource::startTask() {
    unplugged_ = false;
    std::error_code failed;  // the helper says itself what is wrong with the folder
    std::filesystem::create_directories(settings_.root, failed);
    auto* observer = state_.observer;
    if (observer != nullptr) observer->onBackupProgress(-1, "");  // nothing is told yet
    task_ = std::make_unique<HelperTask>(
        settings_.helper.wordsFor(target_, settings_.root),
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

FreshBackup DeviceSource::waitForBackup() {
    while (task_) {
        MobileDevice_->framework().runLoop().run(cancel_.token());
        if (!task_ || !cancel_.requested()) continue;
        task_->cancel();
        MobileDevice_->framework().runLoop().run();
    }
    // It has done its work: the next backup or read is another one's to cancel.
    if (last_.end == FreshBackupEnd::Cancelled) {
        cancel_.renew();
        heedCancel();
    }
    return last_;
}

void DeviceSource::backupTaskEnded(const HelperResult& result) {
    task_.reset();
    const auto end = settle(result);
    if (!end) {
        startTask();
        return;
    }
    last_ = {*end, result, folderOfDeviceBackup(settings_.root, target_),
             wentMeanwhile(result, *end) ? targetName_ : ""};
    MobileDevice_->framework().runLoop().stop();
    const bool complete = *end == FreshBackupEnd::Complete;
    if (!complete) {
        state_.showScreen(Screen::Main);
        return;
    }
    chooseFreshBackup(last_.folder);
    if (state_.observer != nullptr) state_.observer->onBackupComplete();
    if (!scanAfter_) return;
    scanAfter_->BackupLocation = last_.folder.string();
    startScan_(*scanAfter_);
}

// How the backup ended; nothing when the helper is to be started again.
std::optional<FreshBackupEnd> DeviceSource::settle(const HelperResult& result) {
    if (result.cancelled) return FreshBackupEnd::Cancelled;
    if (!result.startFailure.empty()) return FreshBackupEnd::NotStarted;
    // What is described is the device that was backed up, not one that came meanwhile; nor does it
    // matter that another went.
    const auto here = findDevice(*MobileDevice_, target_);
    mDevice_ = here ? here : backedUp_;
    const bool described = describe(connected_ || here != nullptr);
    if (cancel_.requested()) return FreshBackupEnd::Cancelled;
    if (!described) {
        const bool goOn =
            questions_ != nullptr && questions_->continueAnyway(kMissingPropertyListsAfterBackup);
        return goOn ? FreshBackupEnd::Complete : FreshBackupEnd::MissingPropertyLists;
    }
    // Kept: helper-failure-is-an-end.
    if (!wasRefused(result)) return FreshBackupEnd::Complete;
    if (questions_ != nullptr && questions_->tryAgain(kPasscodeQuestion, result.usefulLine))
        return std::nullopt;
    return cancel_.requested() ? FreshBackupEnd::Cancelled : FreshBackupEnd::Refused;
}

bool DeviceSource::wentMeanwhile(const HelperResult& result, FreshBackupEnd end) const {
    if (result.cancelled || end == FreshBackupEnd::NotStarted) return false;
    if (result.exitStatus == 0 && end == FreshBackupEnd::Complete) return false;
    // A helper ends with its device, often before the removal is told.
    std::vector<AttachedDevice> now;
    const bool known = MobileDevice_->framework().listDevices(now) == kAMDSuccess;
    std::erase_if(now, [](const auto& one) { return one.overNetwork; });
    return unplugged_ || (known && !lists(now, target_));
}

void DeviceSource::chooseFreshBackup(const std::filesystem::path& folder) {
    useBackup(state_, folder);
    state_.deviceInfo.BackupLocation = folder.string();
    state_.RecoverType = 0;
}

}  // namespace salvor
