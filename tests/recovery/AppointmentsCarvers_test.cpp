#include "recovery/AppointmentsSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"

namespace salvor {
namespace {

using testing::ElementsAre;

using EventsProbe = CarverProbe<AppointmentsSQLiteRecovery, Appointment>;

class AppointmentsCarvers : public CategoryCarverTest {
  protected:
    static std::shared_ptr<Calendar> event(const Text& summary, const Text& start,
                                           const Text& identifier, const Text& rawStart = {}) {
        auto one = std::make_shared<Calendar>();
        one->Summary = summary;
        one->StartDate = start;
        one->UniqueIdentifier = identifier;
        one->OrginalDate = rawStart;
        return one;
    }

    EventsProbe carver{state};
};

TEST_F(AppointmentsCarvers, FillAnEventByName) {
    EXPECT_EQ(told(carver.filled({{"summary", "Dentist"},
                                  {"location_id", std::int64_t{1LL << 40}},
                                  {"description", "teeth"},
                                  {"start_date", 60.5},
                                  {"start_tz", "_float"},
                                  {"end_date", std::int64_t{120}},
                                  {"calendar_id", std::int64_t{3}},
                                  {"unique_identifier", "AB-1"}})),
              "Recovered=true|LocationId=1099511627776|CalendarId=3|Summary=Dentist|"
              "Description=teeth|StartTimeZone=_float|UniqueIdentifier=AB-1|"
              "OriginalStartDate=60.5|Subject=Dentist|StartTime=60.5|EndTime=120");
}

// The time of the last change overwrites the mark of a whole day, and the other way round.
TEST_F(AppointmentsCarvers, TheLaterOfTwoColumnsSetsAllDay) {
    const Appointment& event = carver.begin();
    const std::tuple<const char*, OptionalColumnValue, bool> columns[] = {
        {"all_day", std::int64_t{1}, true},
        {"last_modified", std::int64_t{0}, false},
        {"last_modified", 400000000.5, true},
        {"all_day", std::int64_t{0}, false}};
    for (const auto& [name, value, allDay] : columns) {
        carver.fill(name, value);
        EXPECT_EQ(event.AllDay, allDay) << name;
    }
}

TEST_F(AppointmentsCarvers, ShiftTheDataByNulsAndHyphens) {
    const std::tuple<const char*, std::string_view, int> cases[] = {
        {"summary", {"\0Dentist", 8}, 1}, {"summary", "Dentist", 0},
        {"summary", {"De\0ntist", 8}, 0}, {"unique_identifier", "ABC-D E", 3},
        {"unique_identifier", "A BC", 1}, {"unique_identifier", "ABC", -1},
        {"description", "A-B", -100},
    };
    for (const auto& [name, text, shift] : cases)
        EXPECT_EQ(carver.position(name, text), shift) << name << " " << text;
}

TEST_F(AppointmentsCarvers, KnowEventsByIdentifierOrBySummaryAndStart) {
    state.AllCalendarContent = {event("Live", "monday", "AB-12 cd"), event({}, {}, {})};
    state.AllDeletedCalendar = {event("Gone", "monday", "EF-34")};
    const struct {
        Text summary, start, identifier;
        bool known;
    } cases[] = {
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
    for (const char* identifier : {"A-1", "A-2", "A-1"})
        carver.add({{"summary", "Dentist"}, {"unique_identifier", identifier}});
    carver.add({});
    EXPECT_THAT(textsOf(state.DeletedCalendar, &Calendar::UniqueIdentifier),
                ElementsAre("A-1", "A-2"));
    EXPECT_EQ(state.DeletedCalendar, state.AllDeletedCalendar);
    EXPECT_EQ(state.DeletedCalendarCount, 2);
}

TEST_F(AppointmentsCarvers, TheFilterComparesSummaryAndRawStart) {
    sql("CREATE TABLE CalendarItem (summary, start_date); "
        "INSERT INTO CalendarItem VALUES (12, 60), (13, NULL)");
    const auto kept = event("12", "shown", {}, "61");
    state.DeletedCalendar = {event("12", "shown", {}, "60"),
                             kept,
                             event("13", "", {}, "60"),
                             event("12", "", {}, "60"),
                             event("two words", "shown", {}, "60"),
                             event("", "shown", {}, "61"),
                             event({}, "shown", {}, "61")};
    carver.fullDBPath = database;
    carver.filterMessages();
    EXPECT_THAT(textsOf(carver.filteredEvents(), &Calendar::Summary),
                ElementsAre("12", "12", "two words"));
    EXPECT_EQ(carver.filteredEvents()[0], kept);
}

}  // namespace
}  // namespace salvor
