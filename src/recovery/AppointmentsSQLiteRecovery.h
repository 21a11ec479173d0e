#pragma once

#include <string>
#include <unordered_set>

#include "records/Appointment.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves deleted calendar events. A find that is known already, live or deleted, is dropped; the
/// others become deleted events of the scan. After the pass the deleted events without a live row
/// of the same summary and start stand in `filteredEvents`.
class AppointmentsSQLiteRecovery : public CategoryCarver<Appointment> {
  public:
    static const SignatureUse<Appointment> kSignature;

    explicit AppointmentsSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Known by its identifier (without regard to hyphens, blanks and case) or by summary and
    /// start among the live events, or by its exact identifier among the deleted ones.
    bool alreadyInDB(const Calendar& event);
    void filterMessages();
    const List<Calendar>& filteredEvents() const { return filteredEvents_; }
    std::int32_t verifyDataPosition(Bytes text) override;

  protected:
    void recordCarved(const std::shared_ptr<Appointment>& event) override;
    void afterRecovery() override { filterMessages(); }
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;

  private:
    void indexNewEvents();

    List<Calendar> filteredEvents_;
    // What `alreadyInDB` asks of the live and deleted lists, which only grow during a run.
    std::unordered_set<std::string> liveIdentifiers_;
    std::unordered_set<std::string> liveSummariesAndStarts_;
    std::unordered_set<Text> deletedIdentifiers_;
    std::size_t liveIndexed_ = 0;
    std::size_t deletedIndexed_ = 0;
};

/// The variant for older devices, with the same columns. No scan runs it.
class AppointmentsIOS4SQLiteRecovery : public AppointmentsSQLiteRecovery {
  public:
    using AppointmentsSQLiteRecovery::AppointmentsSQLiteRecovery;
};

}  // namespace salvor
