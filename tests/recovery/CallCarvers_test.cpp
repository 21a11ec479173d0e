#include "recovery/CallCarver.h"
#include "recovery/CallHistoryRecoveryAlgo.h"
#include "scan/StoredNames.h"
#include "tests/recovery/CarverProbe.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using OldProbe = CarverProbe<CallHistorySQLiteRecovery, CallHistory>;
using NewProbe = CarverProbe<CallHistoryIos8Recovery, CallHistory>;

class CallCarvers : public CategoryCarverTest {
  protected:
    OldProbe older{state};
    NewProbe newer{state};
};

TEST_F(CallCarvers, FillACallByName) {
    // Unix seconds read as those since 2001, kept as whole seconds; flags cut to 8 bits.
    EXPECT_EQ(told(older.filled({{"address", "5551234"},
                                 {"date", 1000000000.75},
                                 {"duration", std::int64_t{65}},
                                 {"flags", std::int64_t{260}},
                                 {"id", std::int64_t{7}},
                                 {"country_code", std::int64_t{262}},
                                 {"network_code", "01"},
                                 {"read", std::int64_t{2}},
                                 {"name", "Ann"}})),
              "Recovered=true|ContactRowId=7|contact={NickName=Ann}|Address=5551234|"
              "Date=2032-09-09 01:46:40|OriginalDate=1000000000|Duration=65|Flags=4|Read=true|"
              "MobileCountryCode=262|MobileNetworkCode=01");
    EXPECT_EQ(told(newer.filled({{"zaddress", "5551234"},
                                 {"zdate", 60.5},
                                 {"zduration", 65.9},
                                 {"zcalltype", std::int64_t{260}},
                                 {"zfacetimedata", std::int64_t{1LL << 40}},
                                 {"zoriginated", std::int64_t{1}},
                                 {"zios_country_code", "de"},
                                 {"zname", "Ann"}})),
              "Recovered=true|Address=5551234|Date=2001-01-01 00:01:00|OriginalDate=60.5|"
              "Duration=65|Flags=260|ZFaceTimeData=1099511627776|ZOriginated=true|"
              "MobileCountryCode=de");
    // A date that is none still leaves its number.
    EXPECT_EQ(told(older.filled({{"date", 1e300}})),
              "Recovered=true|OriginalDate=9.223372036854776e+18");
}

TEST_F(CallCarvers, EveryCompletedRecordIsADeletedCall) {
    older.add({});
    newer.add({{"zaddress", "5551234"}});
    EXPECT_THAT(textsOf(state.DeletedCallLog, &CallLog::Address), ElementsAre("-", "5551234"));
    EXPECT_EQ(state.DeletedCallLog, state.AllDeletedCallLog);
    EXPECT_EQ(state.DeletedCallLogCount, 2);
    EXPECT_EQ(state.DeletedCallLog[0]->SlNo, 1);
    EXPECT_EQ(state.DeletedCallLog[1]->SlNo, 2);
}

TEST_F(CallCarvers, ARunTestsNothingAgainstLiveCalls) {
    signature("CallHistory.storedata", "zcallrecord", "[1];[1];[0];[-12];[4];[1,2];[1,2];[1,2,8,9]",
              {{"address", 3}, {"date", 4}, {"duration", 5}, {"flags", 7}});
    sql("CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address, date, duration, id, flags)",
        {{"(ROWID INTEGER PRIMARY KEY, a, b, c, d, e)",
          "(1, '5551234', 400000000, 65, 9, 4), (2, '5559876', 400000000, 65, 9, 4)"}});
    sql("INSERT INTO call VALUES (1, '5551234', 400000000, 65, 9, 4)");
    older.DoRecoveryPath(database);
    EXPECT_THAT(textsOf(state.DeletedCallLog, &CallLog::Address),
                UnorderedElementsAre("5551234", "5559876"));
    EXPECT_TRUE(older.RecoveredFiltered.empty());
}

TEST_F(CallCarvers, TheFilterAsksTheOlderTableOfBothDatabases) {
    sql("CREATE TABLE call (address, date, duration, flags, id, country_code, network_code); "
        "INSERT INTO call VALUES (12, 34, 5, 0, 0, 0, 0)");
    const auto call = [](const Text& date) {
        auto one = std::make_shared<CallHistory>();
        one->Address = "12";
        one->Date = date;
        one->Duration = 5;
        return one;
    };
    older.fullDBPath = newer.fullDBPath = database;
    // The text of a date does not prepare without quotes.
    older.RecoveredData = {call("34"), call("35"), call("2001-01-01 00:01:00")};
    older.filterMessages();
    EXPECT_EQ(older.RecoveredFiltered.size(), 2U);
    sql("ALTER TABLE call RENAME TO ZCALLRECORD");
    newer.RecoveredData = {call("34")};
    newer.filterMessages();
    EXPECT_EQ(newer.RecoveredFiltered.size(), 1U);
}

/// A record of the newer table as the scanner sees it.
class CallScanner : public CategoryCarverTest {
  protected:
    /// Types of the 16 columns behind the row id, then their values; `before` is what precedes
    /// the header.
    static std::string record(const std::string& before, const std::string& types,
                              const std::string& values) {
        return before + '\x12' + '\0' + types + values;
    }
    static std::string bytes(std::initializer_list<int> values) {
        std::string text;
        for (const int value : values) text += static_cast<char>(value);
        return text;
    }
    static std::optional<ScannedCall> scan(const std::string& store, std::size_t offset = 2) {
        return CallHistoryRecoveryAlgo::scanRecord(
            {reinterpret_cast<const std::uint8_t*>(store.data()), store.size()}, offset);
    }

    /// A new scanner, which begins with an empty list, over the whole store.
    void walk() {
        CallHistoryRecoveryAlgo scanner(state);
        EXPECT_TRUE(state.DeletedCallLog.empty());
        scanner.getBufferFromHaxFile();
        scanner.fetchCallHistoryFrom_ZCALLRECORD_Table();
    }

    // Z_ENT, Z_OPT, answered, type, cause, FaceTime, availability, originated, read; date,
    // duration, address, device, country, name, unique id.
    const std::string types =
        bytes({1, 9, 8, 1, 8, 8, 8, 9, 8, 7, 1, 13 + 2 * 7, 13, 13 + 2 * 2, 13, 13});
    const std::string values =
        bytes({2, 5}) + bytes({0x3B, 0x9A, 0xCA, 0, 9, 9, 9, 9}) + bytes({65}) + "5551234de";
};

TEST_F(CallScanner, ReadsTheColumnsBehindAHeader) {
    const auto call = scan(record(bytes({40, 7}), types, values));
    ASSERT_TRUE(call);
    const std::pair<const char*, Text> expected[] = {
        {"Z_PK", "7"},
        {"Z_ENT", "2"},
        {"Z_OPT", "1"},
        {"ZANSWERED", "0"},
        {"ZCALLTYPE", "5"},
        {"ZDATE", "2001-09-09T01:46:40+0000"},  // the first four bytes
        {"ZDURATION", "65"},
        {"ZADDRESS", "5551234"},
        {"ZISO_COUNTRY_CODE", "de"},
        {"ZNAME", std::nullopt},
        {"ZMUSIC", std::nullopt}};
    for (const auto& [name, value] : expected) EXPECT_EQ(call->value(name), value) << name;
}

TEST_F(CallScanner, TakesTheTypeForTheLengthOfTheMiddleIntegers) {
    // A row id of two bytes, and of one when the byte before it is 128.
    EXPECT_EQ(scan(record(bytes({0x81, 5}), types, values))->value("Z_PK"), "133");
    EXPECT_EQ(scan(record(bytes({0x80, 5}), types, values))->value("Z_PK"), "5");
    // The length of the row stands one or two bytes before it.
    const std::pair<std::string, int> lengths[] = {{bytes({40, 7}), 40},
                                                   {bytes({40, 0x81, 5}), 40},
                                                   {bytes({40, 0x80, 5}), 128},
                                                   {bytes({0x82, 1, 7}), 257}};
    for (const auto& [before, length] : lengths)
        EXPECT_EQ(scan(record(before, types, values), before.size())->payloadLength, length);
    // Types 5 and 6 are five and six bytes long here, six and eight in a database.
    for (const std::size_t type : {5U, 6U}) {
        auto odd = types;
        odd[0] = static_cast<char>(type);
        const std::string entity = std::string(type - 2, '\0') + bytes({1, 0});
        const auto call = scan(record(bytes({1, 1}), odd, entity + values.substr(1)));
        EXPECT_EQ(call->value("Z_ENT"), "256");
        EXPECT_EQ(call->value("ZADDRESS"), "5551234");
    }
    // A text of two type bytes.
    auto longText = types;
    longText.replace(11, 1, bytes({0x81, 13 + 2 * 30}));
    const std::string number(94, '5');
    EXPECT_EQ(scan(record(bytes({1, 1}), longText, values.substr(0, 11) + number + "de"))
                  ->value("ZADDRESS"),
              number);
    for (std::size_t cut = 1; cut < 30; ++cut) {
        const auto whole = record(bytes({1, 1}), types, values);
        EXPECT_FALSE(scan(whole.substr(0, whole.size() - cut))) << cut;
    }
}

TEST_F(CallScanner, NamesTheCallTypeCrosswise) {
    const std::tuple<int, int, const char*> cases[] = {{1, 9, "Outgoing Call -Answered"},
                                                       {1, 8, "Outgoing Call -Not answered"},
                                                       {0, 9, "Incoming Call -Answered"},
                                                       {0, 8, "Incoming Call -Not answered"}};
    for (const auto& [type, originated, text] : cases) {
        auto changed = types;
        changed[3] = static_cast<char>(type);
        changed[7] = static_cast<char>(originated);
        auto data = values;
        if (type == 0) data.erase(1, 1);
        const auto row =
            CallHistoryRecoveryAlgo::toCallLog(*scan(record(bytes({1, 1}), changed, data)));
        EXPECT_EQ(joined({row->CallType, row->PhoneNumber, row->LocalTime}),
                  std::string(text) + "|5551234|2001-09-09T01:46:40+0000");
        EXPECT_EQ(row->CallDuration, 65);
    }
}

TEST_F(CallScanner, WalksTheStoreForRowsThatAreNotLive) {
    database = write(CallHistoryIOS8SqliteDbName,
                     "CREATE TABLE ZCALLRECORD (Z_PK INTEGER PRIMARY KEY); "
                     "INSERT INTO ZCALLRECORD VALUES (3)");
    state.CALLHISTORY_DATABASE = CallHistoryIOS8SqliteDbName;
    const std::string padding(100, 'x');
    auto store = readWholeFile(database) + padding;
    for (const int key : {3, 4, 0}) store += record(bytes({1, key}), types, values) + padding;
    writeWholeFile(database, store);
    state.DeletedCallLog = {std::make_shared<CallLog>()};
    walk();
    ASSERT_EQ(state.DeletedCallLog.size(), 1U) << "row 3 is live, row 0 is none";
    EXPECT_EQ(state.DeletedCallLog[0]->SlNo, 4);
    EXPECT_EQ(state.DeletedCallLogCount, 1);

    std::filesystem::remove(database);
    walk();
    EXPECT_TRUE(state.DeletedCallLog.empty());
}

// The first 32 bytes and the last 18 are never where a header begins.
TEST_F(CallScanner, LeavesTheEndsOfTheStoreAlone) {
    const auto one = record(bytes({1, 4}), types, values);
    for (const auto& [before, found] : {std::pair{29U, 0U}, std::pair{30U, 1U}}) {
        writeWholeFile(folder / CallHistoryIOS8SqliteDbName,
                       std::string(before, 'x') + one + std::string(30, 'x'));
        walk();
        EXPECT_EQ(state.DeletedCallLog.size(), found) << before;
    }
}

}  // namespace
}  // namespace salvor
