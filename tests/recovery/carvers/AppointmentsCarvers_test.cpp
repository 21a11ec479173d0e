#include "recovery/carvers/AppointmentsSQLiteRecovery.h"
#include "tests/recovery/carvers/CarverProbe.h"

namespace salvor {
namespace {

using EventsProbe = CarverProbe<AppointmentsSQLiteRecovery, Appointment>;
using OldEventsProbe = CarverProbe<AppointmentsIOS4SQLiteRecovery, Appointment>;

class AppointmentsCarvers : public CategoryCarverTest {
  protected:
    static std::shared_ptr<Calendar> event(const Text& summary, const Text& start,
                                           const Text& identifier) {
        auto one = std::make_shared<Calendar>();
        one->Summary = summary;
        one->StartDate = start;
        one->UniqueIdentifier = identifier;
        return one;
    }

    EventsProbe carver{state};
};

TEST_F(AppointmentsCarvers, FillAnEventByName) {
    Appointment& event = carver.filled("summary", "Dentist");
    carver.fill("location_id", std::int64_t{1LL << 40});
    carver.fill("description", "teeth");
    carver.fill("start_date", 60.5);
    carver.fill("start_tz", "_float");
    carver.fill("end_date", std::int64_t{120});
    carver.fill("calendar_id", std::int64_t{3});
    carver.fill("unique_identifier", "AB-1");
    EXPECT_EQ(event.Summary, "Dentist");
    EXPECT_EQ(event.Subject, "Dentist");
    EXPECT_EQ(event.LocationId, 1LL << 40);
    EXPECT_EQ(event.Description, "teeth");
    EXPECT_EQ(event.StartTime, Date{60.5});
    EXPECT_EQ(event.OriginalStartDate, "60.5");
    EXPECT_EQ(event.StartTimeZone, "_float");
    EXPECT_EQ(event.EndTime, Date{120});
    EXPECT_EQ(event.CalendarId, 3);
    EXPECT_EQ(event.UniqueIdentifier, "AB-1");
}

// The time of the last change overwrites the mark of a whole day, and the other way round.
TEST_F(AppointmentsCarvers, TheLaterOfTwoColumnsSetsAllDay) {
    Appointment& event = carver.filled("all_day", std::int64_t{1});
    EXPECT_TRUE(event.AllDay);
    carver.fill("last_modified", std::int64_t{0});
    EXPECT_FALSE(event.AllDay);
    carver.fill("last_modified", 400000000.5);
    EXPECT_TRUE(event.AllDay);
    carver.fill("all_day", std::int64_t{0});
    EXPECT_FALSE(event.AllDay);
}

TEST_F(AppointmentsCarvers, ShiftTheDataByNulsAndHyphens) {
    const std::string_view nul("\0Dentist", 8);
    EXPECT_EQ(carver.position("summary", nul), 1);
    EXPECT_EQ(carver.position("summary", "Dentist"), 0);
    EXPECT_EQ(carver.position("summary", std::string_view("De\0ntist", 8)), 0);
    EXPECT_EQ(carver.position("unique_identifier", "ABC-D E"), 3);
    EXPECT_EQ(carver.position("unique_identifier", "A BC"), 1);
    EXPECT_EQ(carver.position("unique_identifier", "ABC"), -1);
    EXPECT_EQ(carver.position("description", "A-B"), -100);
}

TEST_F(AppointmentsCarvers, KnowEventsByIdentifierOrBySummaryAndStart) {
    state.AllCalendarContent = {event("Live", "monday", "AB-12 cd"), event({}, {}, {})};
    state.AllDeletedCalendar = {event("Gone", "monday", "EF-34")};
    struct Case {
        Text summary;
        Text start;
        Text identifier;
        bool known;
    };
    const Case cases[] = {
        {"x", "x", "ab12CD", true},
        {"Live", "monday", "other", true},
        {"Live", "tuesday", "other", false},
        {"x", "x", "EF-34", true},
        // Among the deleted ones an identifier is compared as it is.
        {"x", "x", "ef34", false},
        {"Gone", "monday", "other", false},
        {std::nullopt, std::nullopt, std::nullopt, false},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(carver.alreadyInDB(*event(one.summary, one.start, one.identifier)), one.known)
            << one.summary.value_or("-") << " " << one.identifier.value_or("-");
    }
}

TEST_F(AppointmentsCarvers, ListEachNewEventOnce) {
    for (const char* identifier : {"A-1", "A-2", "A-1"}) {
        carver.filled("summary", "Dentist");
        carver.fill("unique_identifier", identifier);
        carver.add();
    }
    carver.begin();
    carver.add();
    EXPECT_EQ(texts(state.DeletedCalendar, &Calendar::UniqueIdentifier), (Texts{"A-1", "A-2"}));
    EXPECT_EQ(state.DeletedCalendar, state.AllDeletedCalendar);
    EXPECT_EQ(state.DeletedCalendarCount, 2);
}

TEST_F(AppointmentsCarvers, ARunCarvesAndFiltersWithoutALiveRow) {
    addSignature(state, "Calendar.sqlite", "CalendarItem", "[1];[1];[0];[-12];[3,4];[-12]",
                 {{"summary", 3}, {"start_date", 4}, {"unique_identifier", 5}});
    sql("CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary, start_date, "
        "unique_identifier); CREATE TABLE gone (ROWID INTEGER PRIMARY KEY, a, b, c); "
        "INSERT INTO gone VALUES (2, 'Dentist', 10000000, '-gone-2'), (3, 'Lunch', 10000000, "
        "'-gone-3')");
    sql("DROP TABLE gone");
    carver.DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedCalendar, &Calendar::Summary),
                testing::UnorderedElementsAre("Dentist", "Lunch"));
    EXPECT_EQ(carver.filteredEvents().size(), 2U);

    state.DeletedCalendar.clear();
    state.AllDeletedCalendar.clear();
    OldEventsProbe older(state);
    older.DoRecoveryPath(database);
    EXPECT_EQ(state.DeletedCalendar.size(), 2U);
}

TEST_F(AppointmentsCarvers, TheFilterComparesSummaryAndRawStart) {
    sql("CREATE TABLE CalendarItem (summary, start_date); "
        "INSERT INTO CalendarItem VALUES (12, 60), (13, NULL)");
    const auto deleted = [this](const Text& summary, const Text& start, const Text& raw) {
        state.DeletedCalendar.push_back(event(summary, start, {}));
        state.DeletedCalendar.back()->OrginalDate = raw;
    };
    deleted("12", "shown", "60");
    deleted("12", "shown", "61");
    deleted("13", "", "60");
    deleted("12", "", "60");
    deleted("two words", "shown", "60");
    deleted("", "shown", "61");
    deleted(std::nullopt, "shown", "61");
    carver.fullDBPath = database;
    carver.filterMessages();
    EXPECT_EQ(texts(carver.filteredEvents(), &Calendar::Summary), (Texts{"12", "12", "two words"}));
    EXPECT_EQ(carver.filteredEvents()[0]->OrginalDate, "61");
}

}  // namespace
}  // namespace salvor
