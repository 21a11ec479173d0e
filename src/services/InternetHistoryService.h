#pragma once

#include "services/abstractServices.h"

namespace salvor {

/// The browser history: reads the live visits of three candidate files, each either a database or,
/// as before iOS 8, a property list. Nothing is carved. Kept: history-of-every-place.
class InternetHistoryService : public abstractServices {
  public:
    explicit InternetHistoryService(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    /// Lists the visits of the file with the current stored name.
    void queryDbForHistory(const DeviceInfo& device);
    /// Browser history is not carved.
    void doRecovery(const DeviceInfo&) {}

  private:
    /// Whether the file is a property list.
    bool readPropertyList(const std::filesystem::path& path);
    void list(std::shared_ptr<InternetHistory> visit);
};

}  // namespace salvor
