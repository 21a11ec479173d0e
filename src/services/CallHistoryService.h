#pragma once

#include <filesystem>
#include <string>

#include "records/CallHistory.h"
#include "services/abstractServices.h"
#include "services/contactServices.h"

namespace salvor {

/// The call-history category, from both generations of the database; a missing file yields
/// nothing. Kept: both-call-stores.
class CallHistoryService : public abstractServices {
  public:
    explicit CallHistoryService(ScanState& state);

    /// Where callers are looked up; without it they stay without a contact. Read only once the
    /// contacts of the scan are complete.
    const contactServices* contactServ = nullptr;

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    void doRecovery(const DeviceInfo& device);
    void doRecovery5_6_7(const DeviceInfo& device);
    void doRecovery8(const DeviceInfo& device);

    /// Reads the live rows of both databases into `model`. No step of a scan calls it.
    void getWhatisExisting(const DeviceInfo& device);
    void getWhatisExistingIos5_6_7(const DeviceInfo& device);
    void getWhatisExistingIos8(const DeviceInfo& device);

  private:
    template <class Fill>
    void readCalls(const DeviceInfo& device, const char* storedName, const char* statement,
                   Fill fill);
    std::shared_ptr<Contact> contactOf(const CallHistory& call, bool byRowId) const;

    std::string callHistoryIOS567ConnectionString_;
    std::string callHistoryIOS8ConnectionString_;
};

}  // namespace salvor
