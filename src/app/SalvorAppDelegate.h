#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "app/FreshBackup.h"
#include "app/recovery/RecoveryWindowController.h"
#include "app/recovery/ServiceRunner.h"
#include "backup/extraction/CategoryExtraction.h"
#include "backup/extraction/WorkFolder.h"
#include "device/MobileDeviceAccess.h"
#include "scan/ScanState.h"

namespace salvor {

/// What a person asked to scan.
struct dataTypeHolder {
    std::int32_t dataType = 0;  ///< 0 everything, 1 messages, ... 8 calendar
    std::string BackupLocation;
};

/// How the choice of a source ended.
enum class SourceChoice {
    Ready,                 ///< the device is described, the scan may start
    MissingPropertyLists,  ///< the question has to be asked before the scan starts
    Unusable,              ///< no such folder, or not readable; nothing was changed
};

/// The question after a choice of source, and the one after a fresh backup. They differ by one
/// blank, deliberately.
inline constexpr auto kMissingPropertyLists =
    "\"Info.plist\" or \"Manifest.plist\" is missing. Please check the backup file. Not able to "
    "recover data.Do you want to continue anyway?";
inline constexpr auto kMissingPropertyListsAfterBackup =
    "\"Info.plist\" or \"Manifest.plist\" is missing. Please check the backup file. Not able to "
    "recover data. Do you want to continue anyway?";

/// The application object: owns the state of the scan and runs it, from start-up to result. One
/// scan at a time. `cancel` may be called from any thread, everything else from the thread that
/// made the object; `ExploreBackupDirectoryWithDataType` runs where it is called.
class SalvorAppDelegate : private DeviceListener {
  public:
    /// Makes the services of one scan.
    using ServicesFactory = std::function<std::unique_ptr<ServiceRunner>(ScanState&)>;

    explicit SalvorAppDelegate(ScanObserver* observer = nullptr, ServicesFactory services = {});
    SalvorAppDelegate(const SalvorAppDelegate&) = delete;
    SalvorAppDelegate& operator=(const SalvorAppDelegate&) = delete;
    ~SalvorAppDelegate() override;

    /// The application object made last, or null. Serves the front ends alone.
    static SalvorAppDelegate* appDelegate();

    ScanState& state() { return state_; }
    WorkFolder& workFolder() { return *workFolder_; }
    /// Makes "Temp" in `parent` from now on; nothing is a private folder.
    void setWorkFolder(std::optional<std::filesystem::path> parent);

    /// Start-up: loads the signatures in the background.
    void applicationDidFinishLaunching(
        const std::optional<std::filesystem::path>& signatures = std::nullopt);
    /// Loads the signatures file; whatever is wrong with it is a warning to the observer. Sets
    /// `signatureLoaded` in every case.
    void loadRecoverySignatures(const std::optional<std::filesystem::path>& signatures);

    /// Makes the folder that a person chose (or the folder of the property list that they chose)
    /// the source of the next scan and describes its device.
    SourceChoice chooseBackup(const std::filesystem::path& chosen);
    /// Fills `deviceInfo` from `BACKUP_DIRECTORY`; whether to go on without asking.
    bool getInfoFromBackup();
    /// `chooseBackup`, and when it is ready the scan in the background.
    SourceChoice MacRecovery(const std::filesystem::path& chosen, const dataTypeHolder& holder);
    /// The answer "Yes" to the missing-property-list question: goes on regardless.
    void continueToRecover(const dataTypeHolder& holder);

    // Connected devices. All on the thread that runs the loop of the device framework.

    /// Makes this object the listener of `devices` (not owned, outlives it).
    void listenForDevices(MobileDeviceAccess& devices);
    MobileDeviceAccess* MobileDevice() const { return MobileDevice_; }
    /// The current device: the named one that came last, or the one that was chosen.
    const std::shared_ptr<AMDevice>& mDevice() const { return mDevice_; }
    void chooseDevice(std::shared_ptr<AMDevice> device) { mDevice_ = std::move(device); }
    void setFreshBackup(FreshBackupSettings settings, FreshBackupQuestions* questions);

    /// Fills `deviceInfo` from the current device, makes the device's own folder the source;
    /// whether to go on without asking.
    bool getInfoFromDevice();
    /// The one or the other, by whether a device is connected.
    bool getInfoFromDeviceOrBackup();
    /// Starts the helper that writes a fresh backup of the device; false while one runs. Its end
    /// is dealt with on this thread, within `waitForBackup`; a backup that is complete is scanned
    /// in the background if `thenScan` says how.
    bool BackupAgent(const std::string& udid, std::optional<dataTypeHolder> thenScan = {});
    /// Delivers what happens until no backup runs, and tells how the last one ended. Ends the
    /// helper on `cancel`.
    FreshBackup waitForBackup();

    /// The whole scan on the calling thread: extraction, then recovery. Reports through the
    /// observer and the lists of the state. An exception ends the scan as if finished, with a
    /// warning.
    void ExploreBackupDirectoryWithDataType(const dataTypeHolder& holder);
    /// The same on a thread of its own, after an earlier one has ended.
    void exploreInBackground(const dataTypeHolder& holder);
    void waitForScan();
    /// Until then the observer may still be warned about the signatures file.
    void waitForSignatures();

    /// Ends the scan that runs, extraction and workers alike. A scan on the calling thread that
    /// has yet to begin ends at once.
    void cancel();
    bool cancelRequested() const;
    /// Of the scan that runs or comes next.
    std::stop_token stopToken() const;

    /// Why the last scan had no work folder, or "".
    const std::string& workFolderFailure() const { return workFolderFailure_; }

  private:
    void explore(const dataTypeHolder& holder);
    void recoverDeleted(std::int32_t dataType);
    void endScan();
    void deviceConnected(const std::shared_ptr<AMDevice>& device) override;
    void deviceDisconnected(const std::shared_ptr<AMDevice>& device) override;
    void warnOfDatabaseIndex();
    void forgetCancel();
    void chooseFreshBackup(const std::filesystem::path& folder);
    void readDeviceValues();
    void startBackupTask();
    void backupTaskEnded(const HelperResult& result);
    std::optional<FreshBackupEnd> settleBackup(const HelperResult& result);

    ScanState state_;
    ServicesFactory makeServices_;
    std::unique_ptr<WorkFolder> workFolder_;
    std::string workFolderFailure_;
    RecoveryWindowController recoveryWindowController_;
    MobileDeviceAccess* MobileDevice_ = nullptr;
    std::shared_ptr<AMDevice> mDevice_;
    bool deviceConnected_ = false;
    FreshBackupSettings freshBackup_;
    FreshBackupQuestions* questions_ = nullptr;
    std::string backupTarget_;
    std::shared_ptr<AMDevice> backedUpDevice_;  ///< the current one when the backup began
    std::optional<dataTypeHolder> scanAfterBackup_;
    FreshBackup lastBackup_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();  ///< what the loop still holds asks it
    std::unique_ptr<HelperTask> backupTask_;
    mutable std::mutex stopMutex_;
    std::stop_source stop_;  ///< of the scan that runs or comes next
    std::jthread signatureThread_;
    std::jthread scanThread_;
};

}  // namespace salvor
