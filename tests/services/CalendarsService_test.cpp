#include "services/CalendarsService.h"

#include "tests/services/CategoryFixture.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kItemColumns =
    "(ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, description TEXT, start_date "
    "REAL, start_tz TEXT, end_date REAL, all_day INTEGER, calendar_id INTEGER, orig_item_id "
    "INTEGER, orig_date REAL, organizer_id, self_attendee_id, status, invitation_status, "
    "availability, privacy_level, url TEXT, last_modified REAL, sequence_num, birthday_id, "
    "modified_properties, external_tracking_status, external_id TEXT, external_mod_tag TEXT, "
    "unique_identifier TEXT, external_schedule_id, external_rep, response_comment, hidden, "
    "has_recurrences, has_attendees, UUID, entity_type, priority, due_date, due_tz, due_all_day, "
    "completion_date, creation_date, conference, display_order, created_by_id, modified_by_id, "
    "shared_item_created_date, shared_item_created_tz, shared_item_modified_date, "
    "shared_item_modified_tz, invitation_changed_properties, default_alarm_removed, "
    "phantom_master, participation_status_modified_date)";

std::string itemRow(int key, const std::string& summary, std::int64_t start,
                    const std::string& identifier) {
    const auto date = std::to_string(start);
    return "(" + std::to_string(key) + ",'" + summary + "',1,'about'," + date +
           ",'Europe/Berlin'," + date + "+3600,0,2,0,NULL,0,0,0,0,0,0,NULL,399999000.5,0,-1,3,0," +
           "NULL,NULL,'" + identifier + "',NULL,NULL,NULL,0,0,0,'" + identifier +
           "',2,0,NULL,NULL,0,NULL,399999000.5,NULL,70000000,3,3,NULL,NULL,NULL,NULL,0,0,0,NULL)";
}

std::string identifier(int number) {
    return "0D9C1E0A-7A6C-4D53-9C5B-0000000000" + std::to_string(number);
}

std::string items(const std::string& rows) {
    return table("CalendarItem", kItemColumns, rows) + table("Location", "(title)", "('Room')");
}

class Calendars : public CategoryFixture {
  protected:
    CalendarsService service{state};
};

TEST_F(Calendars, CarvesEventsAndKeepsThoseWithoutALiveRow) {
    // A summary stands in the filter's statement without quotes, so that one which is the name of
    // a column meets a live row of the same start. Kept: unquoted-values.
    store(CalendarsSqliteDbName, items(itemRow(1, "live", 400000000, identifier(11))),
          {{kItemColumns, itemRow(101, "summary", 400000000, identifier(21)) + "," +
                              itemRow(102, "Lunch with Ada", 400086400, identifier(22)) + "," +
                              itemRow(103, "", 400086500, identifier(23))}});
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(textsOf(state.DeletedCalendar, &Calendar::Summary),
                ElementsAre("", "Lunch with Ada", "summary"));
    EXPECT_THAT(textsOf(service.recoveredFiltered(), &Calendar::Summary),
                ElementsAre("Lunch with Ada"));
    EXPECT_EQ(service.recovered(), 1);
    EXPECT_EQ(state.DeletedCalendarCount, 3);
    EXPECT_EQ(state.DeletedCalendar[1]->StartDate, "2013-09-05 15:06:40");
    EXPECT_THAT(service.model(), IsEmpty());
    EXPECT_EQ(service.retrieved(), 0);
}

TEST_F(Calendars, TheStatementForLiveEventsFollowsTheVersion) {
    store("both",
          items(itemRow(1, "new", 60, identifier(11))) +
              ";CREATE TABLE Event(location, description, summary, start_date, end_date, "
              "start_tz, all_day);INSERT INTO Event VALUES('Hall','d','old',60,120,'tz',1)");
    const struct {
        int version;
        const char* expected;
    } cases[] = {{3, "old|Hall"}, {4, "old|Hall"}, {5, "new|Room"}, {9, "new|Room"}};
    for (const auto& c : cases) {
        device.iOSMajorVersion = c.version;
        FMDBUtils database(folder / "both");
        ASSERT_TRUE(database.openDatabase());
        auto rows = database.executeQuery(CalendarsService::existingEventsStatement(device));
        ASSERT_TRUE(rows.next()) << c.version;
        EXPECT_EQ(joined({rows.stringForColumn("summary"), rows.stringForColumn("LocationTitle")}),
                  c.expected);
        EXPECT_EQ(rows.stringForColumn("START_DATE"), "2001-01-01 00:01:00");
    }
}

// Whatever the version asks for, what is run is the statement for persons.
TEST_F(Calendars, TheCheckForLiveEventsAsksForPersons) {
    const auto live = items(itemRow(1, "live", 400000000, identifier(11)));
    store(CalendarsSqliteDbName, live);
    for (const int version : {4, 7}) {
        device.iOSMajorVersion = version;
        service.checkForExisitngData(device);
        EXPECT_THAT(service.model(), IsEmpty());
        EXPECT_EQ(service.retrieved(), 0);
    }
    write(CalendarsSqliteDbName, table("ABPerson", kPersonColumns) +
                                     "INSERT INTO ABPerson(First) VALUES('a'),('b'),('c')");
    service.checkForExisitngData(device);
    EXPECT_EQ(service.retrieved(), 3);
    ASSERT_EQ(service.model().size(), 3U);
    EXPECT_EQ(dynamic_cast<const Appointment&>(*service.model()[0]).Summary, std::nullopt);
}

}  // namespace
}  // namespace salvor
