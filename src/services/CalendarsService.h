#pragma once

#include "records/Appointment.h"
#include "services/abstractServices.h"

namespace salvor {

/// The calendar category: carves deleted events. Live ones reach the scan through the data-access
/// object.
class CalendarsService : public abstractServices {
  public:
    explicit CalendarsService(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    void doRecovery(const DeviceInfo& device);
    /// Runs the address-book person statement on the calendar database and so reads no rows. No
    /// step of a scan calls it. Kept: events-ask-for-persons.
    void checkForExisitngData(const DeviceInfo& device);
    /// The statement that lists live events of a generation, for callers that run it themselves.
    static const char* existingEventsStatement(const DeviceInfo& device);

    const List<Calendar>& recoveredFiltered() const { return recoveredFiltered_; }

  private:
    void initaliseForRecovery();
    void processPostRecovery() {}

    List<Calendar> recoveredFiltered_;
};

}  // namespace salvor
