#include "recovery/AppointmentsSQLiteRecovery.h"
#include "recovery/CallCarver.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "recovery/NotesSQLiteRecovery.h"
#include "recovery/WhatsAppMessagesSQLiteRecovery.h"
#include "recovery/messages/MessagesSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"

namespace salvor {
namespace {

class CarvedDates : public CategoryCarverTest {
  protected:
    template <class Carver, class Record>
    void expectNothingOf(const Texts& names) {
        for (const auto& name : names)
            EXPECT_EQ(told(CarverProbe<Carver, Record>(state).filled({{name, std::nullopt}})),
                      "Recovered=true")
                << name;
    }
};

TEST_F(CarvedDates, AreAbsentWhenTheirColumnDoesNotDecode) {
    expectNothingOf<NotesSQLiteRecovery, Note>({"ZCREATIONDATE", "ZMODIFICATIONDATE"});
    expectNothingOf<WhatsAppMessagesSQLiteRecovery, WhatsAppMessage>({"ZMessageDate"});
    expectNothingOf<CallHistorySQLiteRecovery, CallHistory>({"date"});
    expectNothingOf<CallHistoryIos8Recovery, CallHistory>({"zdate"});
    expectNothingOf<AppointmentsSQLiteRecovery, Appointment>({"start_date", "end_date"});
    expectNothingOf<ContactsSQLiteRecovery, Contact>({"CreationDate", "ModificationDate"});
    expectNothingOf<MessagesSQLiteRecovery, Message>({"date", "date_read", "date_delivered"});
}

}  // namespace
}  // namespace salvor
