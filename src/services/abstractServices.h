#pragma once

#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "records/List.h"
#include "records/baseRecoveryObject.h"
#include "scan/ScanState.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Base of every category service: finds its database in the backup, reads what exists, carves
/// the rest and merges. Lives for one scan; runs on the thread that calls it.
class abstractServices {
  public:
    abstractServices(ScanState& state, std::string sqliteDbName);
    abstractServices(const abstractServices&) = delete;
    abstractServices& operator=(const abstractServices&) = delete;
    virtual ~abstractServices();

    const std::string& SqliteDbName() const { return SqliteDbName_; }
    std::int32_t retrieved() const { return retrieved_; }
    std::int32_t recovered() const { return recovered_; }
    const List<baseRecoveryObject>& model() const { return model_; }

    /// The file at the device's `fullPath` when it has one, else the one with the stored name.
    BackupFile ConnectionFileFullPath(const DeviceInfo& device) const;
    BackupFile ConnectionStringfromDevice(const DeviceInfo& device) const;
    /// As above, but nothing when no file lies there.
    std::optional<BackupFile> ConnectionString(const DeviceInfo& device) const;

    void RecoverFromDevice(const DeviceInfo& device) { RecoverFromIOSBackup(device); }
    /// The category's whole run: live rows, carving, merge.
    virtual void RecoverFromIOSBackup(const DeviceInfo& device) = 0;

    /// Cancels the carvers and statements of this service.
    void setStopToken(std::stop_token token) { cancelled_ = std::move(token); }

  protected:
    /// The files of the source, or of the other backup that the device's `BackupLocation` names.
    std::shared_ptr<const BackupFiles> filesOf(const DeviceInfo& device) const;
    std::shared_ptr<FMDBUtils> connection(BackupFile file) const;

    ScanState& state_;
    std::string SqliteDbName_;
    std::shared_ptr<FMDBUtils> dbUtils_;
    std::int32_t retrieved_ = 0;
    std::int32_t recovered_ = 0;
    List<baseRecoveryObject> model_;
    std::stop_token cancelled_;
};

}  // namespace salvor
