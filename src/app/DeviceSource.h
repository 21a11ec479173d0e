#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/CancelSource.h"
#include "app/FreshBackup.h"
#include "app/SourceChoice.h"
#include "device/MobileDeviceAccess.h"
#include "scan/ScanState.h"

namespace salvor {

/// Connected devices as the source of a scan: keeps the current one, describes it, has a fresh
/// backup of it written and makes that the source. One backup at a time. Everything on the thread
/// that runs the loop of the device framework; the cancel comes from any.
class DeviceSource : private DeviceListener {
  public:
    using StartScan = std::function<void(const dataTypeHolder&)>;

    /// All are not owned and outlive this object; `startScan` scans what `state` names.
    DeviceSource(ScanState& state, CancelSource& cancel, StartScan startScan);
    ~DeviceSource() override;

    /// Listens to `devices` (not owned, outlives this object) from now on.
    void listenFor(MobileDeviceAccess& devices);
    MobileDeviceAccess* MobileDevice() const { return MobileDevice_; }
    /// The current device: the named one that came last, or the one that was chosen.
    const std::shared_ptr<AMDevice>& mDevice() const { return mDevice_; }
    void choose(std::shared_ptr<AMDevice> device) { mDevice_ = std::move(device); }
    bool isConnected() const { return connected_; }
    void setFreshBackup(FreshBackupSettings settings, FreshBackupQuestions* questions);

    /// Fills `deviceInfo` from the current device, makes the device's own folder the source;
    /// whether to go on without asking.
    bool getInfoFromDevice();
    /// Starts the helper that writes a fresh backup of the device; false while one runs. Its end
    /// is dealt with on this thread, within `waitForBackup`; a backup that is complete is scanned
    /// if `thenScan` says how.
    bool BackupAgent(const std::string& udid, std::optional<dataTypeHolder> thenScan);
    /// Delivers what happens until no backup runs, and tells how the last one ended. Ends the
    /// helper on a cancel.
    FreshBackup waitForBackup();
    /// The cancel was renewed: what waits for a device heeds the new one.
    void heedCancel();

  private:
    void deviceConnected(const std::shared_ptr<AMDevice>& device) override;
    void deviceDisconnected(const std::shared_ptr<AMDevice>& device) override;
    bool describe(bool connected);
    void readValues();
    bool wentMeanwhile(const HelperResult& result, FreshBackupEnd end) const;
    void startTask();
    void backupTaskEnded(const HelperResult& result);
    std::optional<FreshBackupEnd> settle(const HelperResult& result);
    void chooseFreshBackup(const std::filesystem::path& folder);

    ScanState& state_;
    CancelSource& cancel_;
    StartScan startScan_;
    MobileDeviceAccess* MobileDevice_ = nullptr;
    std::shared_ptr<AMDevice> mDevice_;
    bool connected_ = false;
    FreshBackupSettings settings_;
    FreshBackupQuestions* questions_ = nullptr;
    std::string target_;
    std::string targetName_;              ///< as a person knows the device
    bool unplugged_ = false;              ///< it was seen to go during the backup
    std::shared_ptr<AMDevice> backedUp_;  ///< the current device when the backup began
    std::optional<dataTypeHolder> scanAfter_;
    FreshBackup last_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();  ///< what the loop still holds asks it
    std::unique_ptr<HelperTask> task_;
};

}  // namespace salvor
