#include "services/CallHistoryService.h"

#include "tests/services/CategoryFixture.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kOlderColumns =
    "(ROWID INTEGER PRIMARY KEY, address TEXT, date INTEGER, duration INTEGER, flags INTEGER, id "
    "INTEGER, name TEXT, country_code TEXT, network_code TEXT, read INTEGER, assisted INTEGER, "
    "face_time_data BLOB, originalAddress TEXT, answered INTEGER)";
constexpr auto kNewerColumns =
    "(Z_PK INTEGER PRIMARY KEY, Z_ENT, Z_OPT, ZANSWERED, ZCALLTYPE, ZDISCONNECTED_CAUSE, "
    "ZFACE_TIME_DATA, ZNUMBER_AVAILABILITY, ZORIGINATED, ZREAD, ZDATE, ZDURATION, ZDEVICE_ID, "
    "ZISO_COUNTRY_CODE, ZLOCATION, ZNAME, ZUNIQUE_ID, ZADDRESS)";

std::string olderRow(int key, const std::string& address, std::int64_t date, int contact = -1) {
    return "(" + std::to_string(key) + ",'" + address + "'," + std::to_string(date) + ",62,5," +
           std::to_string(contact) + ",'','262','01',1,0,NULL,'',1)";
}

std::string newerRow(int key, const std::string& address, const std::string& date) {
    return "(" + std::to_string(key) + ",2,1,1,1,NULL,NULL,0,0,1," + date +
           ",30.5,NULL,'de','Berlin',NULL,'0D9C1E0A-7A6C-4D53-9C5B-0123456789AB',CAST('" + address +
           "' AS BLOB))";
}

/// Notes whether the flag was up when a deleted record was announced.
struct FlagWatcher : ScanObserver {
    ScanState* state = nullptr;
    std::vector<bool> seen;
    void onRecoveredData() override { seen.push_back(state->isDoingCallList); }
};

class Calls : public CategoryFixture {
  protected:
    /// An address book with Ada (row 1, +49301), Bob (row 2, the same and +49302) and Cem (row 3).
    void storeContacts() {
        store(ContactsIOS641SqliteDbName,
              table("ABPerson", kPersonColumns) +
                  "INSERT INTO ABPerson(ROWID, First) VALUES(1,'Ada'),(2,'Bob'),(3,'Cem');"
                  "CREATE TABLE ABMultiValue(UID INTEGER PRIMARY KEY, record_id, property, "
                  "identifier, "
                  "label, value);"
                  "INSERT INTO ABMultiValue VALUES(1,2,3,0,0,'+49302'),(2,2,3,1,0,'+49301'),"
                  "(3,1,3,0,0,'+49301'),(4,3,3,0,0,'')");
        contacts.RecoverFromIOSBackup(device);
        ASSERT_EQ(contacts.ContactsAll().size(), 3U);
        calls.contactServ = &contacts;
    }

    Texts live() const {
        Texts lines;
        for (const auto* call : recordsOf<CallHistory>(calls))
            lines.push_back(
                joined({std::to_string(call->RowId), call->Address, call->contact->FirstName}));
        return lines;
    }

    Texts deleted() const {
        Texts lines;
        for (const auto& call : state.DeletedCallLog)
            lines.push_back(joined({std::to_string(call->SlNo), call->Address, call->LocalTime,
                                    call->ContactName, std::to_string(call->CallDuration)}));
        return lines;
    }

    contactServices contacts{state};
    CallHistoryService calls{state};
};

TEST_F(Calls, CarvesBothGenerationsWhateverTheVersion) {
    auto ada = std::make_shared<Contact>();
    ada->ContactNo1 = "+4930111";
    ada->FirstName = "Ada";
    state.ContactContent.push_back(ada);
    store(CallHistoryIOS7641SqliteDbName, table("call", kOlderColumns),
          {{kOlderColumns, olderRow(300, "+4930111", 400000000)}});
    store(CallHistoryIOS8SqliteDbName, table("ZCALLRECORD", kNewerColumns),
          {{kNewerColumns, newerRow(301, "+4930222", "60.5")}});
    FlagWatcher watcher;
    watcher.state = &state;
    state.observer = &watcher;
    for (const int version : {4, 9}) {
        SCOPED_TRACE(version);
        device.iOSMajorVersion = version;
        state.DeletedCallLog.clear();
        CallHistoryService service(state);
        service.RecoverFromIOSBackup(device);
        // Kept: calls-31-years-late.
        EXPECT_THAT(deleted(), ElementsAre("1|+4930111|2013-09-04 15:06:40|Ada|62",
                                           "2|+4930222|2001-01-01 00:01:00||30"));
        EXPECT_EQ(service.SqliteDbName(), CallHistoryIOS8SqliteDbName);
        // Carved calls reach the scan's lists, never the service's.
        EXPECT_THAT(service.model(), IsEmpty());
        EXPECT_EQ(service.recovered(), 0);
    }
    EXPECT_EQ(state.DeletedCallLogCount, 4);
    EXPECT_FALSE(state.isDoingCallList);
    EXPECT_THAT(watcher.seen, ElementsAre(true, true)) << "only the newer store announces a call";
}

TEST_F(Calls, LiveCallsGetTheContactTheyNameElseTheFirstWithTheNumber) {
    storeContacts();
    store(CallHistoryIOS7641SqliteDbName,
          table("call", kOlderColumns,
                olderRow(1, "+49301", 100) + "," + olderRow(2, "+49301", 200, 3) + "," +
                    olderRow(3, "+49302", 200) + "," + olderRow(4, "49302", 300) + "," +
                    olderRow(5, "+49301", 400, 77) + "," + olderRow(6, "", 500) + "," +
                    olderRow(7, "+49302", 600, 0)));
    store(CallHistoryIOS8SqliteDbName,
          table("ZCALLRECORD", kNewerColumns,
                newerRow(1, "+49301", "100.5") + "," + newerRow(2, "+49309", "100.5") + "," +
                    newerRow(9, "+49302", "200")));
    calls.getWhatisExisting(device);
    EXPECT_THAT(live(), ElementsAre("7|+49302|Bob", "6||-", "5|+49301|-", "4|49302|-",
                                    "2|+49301|Cem", "3|+49302|Bob", "1|+49301|Ada", "9|+49302|Bob",
                                    "1|+49301|Ada", "2|+49309|-"));
    EXPECT_EQ(calls.retrieved(), 10);
}

TEST_F(Calls, WithoutContactsEveryCallHasAnEmptyOne) {
    store(CallHistoryIOS7641SqliteDbName,
          table("call", kOlderColumns, olderRow(1, "+49301", 100, 3)));
    calls.getWhatisExisting(device);
    EXPECT_THAT(live(), ElementsAre("1|+49301|-"));
}

TEST_F(Calls, ReadsTheColumnsOfEachGeneration) {
    store(CallHistoryIOS7641SqliteDbName,
          table("call", kOlderColumns,
                "(7,'+49301',400000000,4294967297,21,3,'n','262','01',1,0,NULL,'',1)"));
    store(CallHistoryIOS8SqliteDbName,
          table("ZCALLRECORD", kNewerColumns,
                "(8,2,1,1,16,NULL,NULL,0,1,1,60.5,4294967297,NULL,'de','B',NULL,'u','+49302')"));
    calls.getWhatisExistingIos8(device);
    calls.getWhatisExistingIos5_6_7(device);
    Texts lines;
    for (const auto* call : recordsOf<CallHistory>(calls))
        lines.push_back(
            joined({call->Date, std::to_string(call->Duration), std::to_string(call->Flags),
                    std::to_string(call->ContactRowId), call->MobileCountryCode,
                    call->MobileNetworkCode, call->ZOriginated ? "out" : "in"}));
    EXPECT_THAT(lines, ElementsAre("2001-01-01 00:01:00|4294967297|16|0|de|-|out",
                                   "1982-09-04 15:06:40|4294967297|21|3|262|01|in"));
}

TEST_F(Calls, BadFilesOfOneGenerationLeaveTheOtherWhole) {
    const struct {
        const char* bad;
        const char* sound;
        std::string live;
        DeletedRows deleted;
    } cases[] = {
        {CallHistoryIOS7641SqliteDbName,
         CallHistoryIOS8SqliteDbName,
         table("ZCALLRECORD", kNewerColumns, newerRow(1, "+49301", "60.5")),
         {kNewerColumns, newerRow(301, "+4930222", "60.5")}},
        {CallHistoryIOS8SqliteDbName,
         CallHistoryIOS7641SqliteDbName,
         table("call", kOlderColumns, olderRow(1, "+49301", 100)),
         {kOlderColumns, olderRow(300, "+4930111", 400000000)}},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(folder / c.bad);
        std::filesystem::remove(folder / c.sound);
        store(c.sound, c.live, {c.deleted});
        overBadFiles(c.bad, [this] {
            state.DeletedCallLog.clear();
            CallHistoryService service(state);
            service.RecoverFromIOSBackup(device);
            service.getWhatisExisting(device);
            EXPECT_EQ(state.DeletedCallLog.size(), 1U);
            EXPECT_EQ(service.model().size(), 1U);
        });
    }
}

TEST_F(Calls, ValuesOfAnotherTypeDoNotStopTheList) {
    store(CallHistoryIOS7641SqliteDbName,
          "CREATE TABLE call(address, date, duration, flags, id, country_code, network_code);"
          "INSERT INTO call VALUES(x'FF', 'soon', 'long', 'x', x'00', 262, 1.5),"
          "(NULL, 9e999, NULL, NULL, NULL, NULL, NULL)");
    calls.getWhatisExisting(device);
    EXPECT_THAT(live(), ElementsAre("1|-|-", "2|-|-"));
}

}  // namespace
}  // namespace salvor
