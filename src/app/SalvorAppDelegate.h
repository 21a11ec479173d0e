#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "app/CancelSource.h"
#include "app/DeviceSource.h"
#include "app/SourceChoice.h"
#include "app/recovery/RecoveryWindowController.h"
#include "app/recovery/ServiceRunner.h"
#include "backup/extraction/CategoryExtraction.h"
#include "backup/extraction/WorkFolder.h"
#include "scan/ScanState.h"

namespace salvor {

/// The application object: owns the state of the scan and runs it, from start-up to result. One
/// scan at a time. `cancel` may be called from any thread, everything else from the thread that
/// made the object; `ExploreBackupDirectoryWithDataType` runs where it is called. For front ends
/// alone, and called by no scan: `appDelegate`, `MacRecovery`, `continueToRecover` and
/// `getInfoFromDeviceOrBackup`, which are a window's actions.
class SalvorAppDelegate {
  public:
    /// Makes the services of one scan.
    using ServicesFactory = std::function<std::unique_ptr<ServiceRunner>(ScanState&)>;

    explicit SalvorAppDelegate(ScanObserver* observer = nullptr, ServicesFactory services = {});
    SalvorAppDelegate(const SalvorAppDelegate&) = delete;
    SalvorAppDelegate& operator=(const SalvorAppDelegate&) = delete;
    ~SalvorAppDelegate();

    /// The application object made last, or null.
    static SalvorAppDelegate* appDelegate();

    ScanState& state() { return state_; }
    /// Null while pictures are left in place.
    WorkFolder* workFolder() { return workFolder_.get(); }
    /// Makes "Temp" in `parent` from now on; nothing is a private folder.
    void setWorkFolder(std::optional<std::filesystem::path> parent);
    /// Copies no picture from now on: they are listed where the backup keeps them.
    void leavePicturesInPlace() { workFolder_ = nullptr; }

    /// Start-up: loads the signatures in the background.
    void applicationDidFinishLaunching(
        const std::optional<std::filesystem::path>& signatures = std::nullopt);
    /// Loads the signatures file; whatever is wrong with it is a warning to the observer. Sets
    /// `signatureLoaded` in every case.
    void loadRecoverySignatures(const std::optional<std::filesystem::path>& signatures);

    /// Makes the folder that a person chose (or the folder of the property list that they chose)
    /// the source of the next scan and describes its device.
    SourceChoice chooseBackup(const std::filesystem::path& chosen);
    /// Fills `deviceInfo` from the backup chosen; whether to go on without asking.
    bool getInfoFromBackup();
    /// `chooseBackup`, and when it is ready the scan in the background.
    SourceChoice MacRecovery(const std::filesystem::path& chosen, const dataTypeHolder& holder);
    /// The answer "Yes" to the missing-property-list question: goes on regardless.
    void continueToRecover(const dataTypeHolder& holder);

    // Connected devices, by way of `DeviceSource`: on the thread that runs the loop of the
    // device framework.
    void listenForDevices(MobileDeviceAccess& devices) { devices_.listenFor(devices); }
    MobileDeviceAccess* MobileDevice() const { return devices_.MobileDevice(); }
    const std::shared_ptr<AMDevice>& mDevice() const { return devices_.mDevice(); }
    void chooseDevice(std::shared_ptr<AMDevice> device) { devices_.choose(std::move(device)); }
    void setFreshBackup(FreshBackupSettings settings, FreshBackupQuestions* questions) {
        devices_.setFreshBackup(std::move(settings), questions);
    }
    bool getInfoFromDevice() { return devices_.getInfoFromDevice(); }
    /// The one or the other, by whether a device is connected.
    bool getInfoFromDeviceOrBackup();
    /// A backup that is complete is scanned in the background if `thenScan` says how.
    bool BackupAgent(const std::string& udid, std::optional<dataTypeHolder> thenScan = {}) {
        return devices_.BackupAgent(udid, std::move(thenScan));
    }
    FreshBackup waitForBackup() { return devices_.waitForBackup(); }

    /// The whole scan on the calling thread: extraction, then recovery. Reports through the
    /// observer and the lists of the state. However the scan ends, `hasDoneScan` is set, the main
    /// screen comes and the observer learns how and why; an exception is an error, too, with a
    /// report for whoever looks for its cause.
    void ExploreBackupDirectoryWithDataType(const dataTypeHolder& holder);
    /// The same on a thread of its own, after an earlier one has ended.
    void exploreInBackground(const dataTypeHolder& holder);
    void waitForScan();
    /// Until then the observer may still be warned about the signatures file.
    void waitForSignatures();

    /// Ends the scan that runs, extraction and workers alike. A scan on the calling thread that
    /// has yet to begin ends at once.
    void cancel();
    bool cancelRequested() const { return cancel_.requested(); }
    /// Of the scan that runs or comes next; an export afterwards is ended by it too.
    std::stop_token stopToken() const { return cancel_.token(); }

    /// The services of the last scan, until the next one begins: what they found stays with them.
    /// Null before any recovery.
    ServicesManager* servicesMgr() const { return services_ ? services_->manager() : nullptr; }

    /// Why the last scan had no work folder, or "".
    const std::string& workFolderFailure() const { return workFolderFailure_; }
    /// What exception ended the last scan, or "".
    const std::string& scanFailure() const { return scanFailure_; }

  private:
    ScanEnd explore(const dataTypeHolder& holder);
    void recoverDeleted(std::int32_t dataType);
    void warnOfIndex();
    void forgetCancel();

    ScanState state_;
    ServicesFactory makeServices_;
    std::unique_ptr<ServiceRunner> services_;
    std::unique_ptr<WorkFolder> workFolder_;
    std::string workFolderFailure_;
    std::string scanFailure_;
    RecoveryWindowController recoveryWindowController_;
    CancelSource cancel_;
    DeviceSource devices_{state_, cancel_,
                          [this](const dataTypeHolder& holder) { exploreInBackground(holder); }};
    std::jthread signatureThread_;
    std::jthread scanThread_;
};

}  // namespace salvor
