#include "recovery/carvers/CallCarver.h"
#include "recovery/carvers/CallHistoryRecoveryAlgo.h"
#include "services/database/DatabaseNames.h"
#include "tests/recovery/carvers/CarverProbe.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using OldProbe = CarverProbe<CallHistorySQLiteRecovery, CallHistory>;
using NewProbe = CarverProbe<CallHistoryIos8Recovery, CallHistory>;

class CallCarvers : public CategoryCarverTest {
  protected:
    OldProbe older{state};
    NewProbe newer{state};
};

TEST_F(CallCarvers, FillAnOlderCallByName) {
    CallHistory& call = older.filled("address", "5551234");
    older.fill("date", 1000000000.75);
    older.fill("duration", std::int64_t{65});
    older.fill("flags", std::int64_t{260});
    older.fill("id", std::int64_t{7});
    older.fill("country_code", std::int64_t{262});
    older.fill("network_code", "01");
    older.fill("read", std::int64_t{2});
    older.fill("name", "Ann");
    EXPECT_EQ(call.Address, "5551234");
    EXPECT_EQ(call.Date, "2032-09-09 01:46:40") << "Unix seconds read as those since 2001";
    EXPECT_EQ(call.OriginalDate, 1000000000) << "the whole seconds";
    EXPECT_EQ(call.Duration, 65);
    EXPECT_EQ(call.Flags, 4) << "cut to 8 bits";
    EXPECT_EQ(call.ContactRowId, 7);
    EXPECT_EQ(call.MobileCountryCode, "262");
    EXPECT_EQ(call.MobileNetworkCode, "01");
    EXPECT_TRUE(call.Read);
    ASSERT_TRUE(call.contact);
    EXPECT_EQ(call.contact->NickName, "Ann");
}

TEST_F(CallCarvers, FillANewerCallByName) {
    CallHistory& call = newer.filled("zaddress", "5551234");
    newer.fill("zdate", 60.5);
    newer.fill("zduration", 65.9);
    newer.fill("zcalltype", std::int64_t{260});
    newer.fill("zfacetimedata", std::int64_t{1LL << 40});
    newer.fill("zoriginated", std::int64_t{1});
    newer.fill("zios_country_code", "de");
    newer.fill("zname", "Ann");
    EXPECT_EQ(call.Address, "5551234");
    EXPECT_EQ(call.Date, "2001-01-01 00:01:00");
    EXPECT_EQ(call.OriginalDate, 60.5);
    EXPECT_EQ(call.Duration, 65);
    EXPECT_EQ(call.Flags, 260);
    EXPECT_EQ(call.ZFaceTimeData, 1LL << 40);
    EXPECT_TRUE(call.ZOriginated);
    EXPECT_EQ(call.MobileCountryCode, "de");
    EXPECT_EQ(call.contact, nullptr);
}

TEST_F(CallCarvers, ADateThatIsNoneStillLeavesItsNumber) {
    const CallHistory& call = older.filled("date", 1e300);
    EXPECT_EQ(call.Date, std::nullopt);
    EXPECT_EQ(call.OriginalDate, 9223372036854775807.0);
}

TEST_F(CallCarvers, EveryCompletedRecordIsADeletedCall) {
    older.begin();
    older.add();
    newer.filled("zaddress", "5551234");
    newer.add();
    EXPECT_EQ(texts(state.DeletedCallLog, &CallLog::Address), (Texts{"(absent)", "5551234"}));
    EXPECT_EQ(state.DeletedCallLog, state.AllDeletedCallLog);
    EXPECT_EQ(state.DeletedCallLogCount, 2);
    EXPECT_EQ(state.DeletedCallLog[0]->SlNo, 1);
    EXPECT_EQ(state.DeletedCallLog[1]->SlNo, 2);
}

TEST_F(CallCarvers, ARunTestsNothingAgainstLiveCalls) {
    addSignature(state, "CallHistory.storedata", "zcallrecord",
                 "[1];[1];[0];[-12];[4];[1,2];[1,2];[1,2,8,9]",
                 {{"address", 3}, {"date", 4}, {"duration", 5}, {"flags", 7}});
    sql("CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address, date, duration, id, flags); "
        "CREATE TABLE gone (ROWID INTEGER PRIMARY KEY, a, b, c, d, e); INSERT INTO gone VALUES "
        "(1, '5551234', 400000000, 65, 9, 4), (2, '5559876', 400000000, 65, 9, 4)");
    sql("DROP TABLE gone");
    sql("INSERT INTO call VALUES (1, '5551234', 400000000, 65, 9, 4)");
    older.DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedCallLog, &CallLog::Address),
                testing::UnorderedElementsAre("5551234", "5559876"));
    EXPECT_TRUE(older.RecoveredFiltered.empty());
}

TEST_F(CallCarvers, TheFilterAsksTheOlderTableOfBothDatabases) {
    sql("CREATE TABLE call (address, date, duration, flags, id, country_code, network_code); "
        "INSERT INTO call VALUES (12, 34, 5, 0, 0, 0, 0)");
    const auto call = [](const Text& address, const Text& date) {
        auto one = std::make_shared<CallHistory>();
        one->Address = address;
        one->Date = date;
        one->Duration = 5;
        return one;
    };
    older.fullDBPath = newer.fullDBPath = database;
    // The text of a date does not prepare without quotes.
    older.RecoveredData = {call("12", "34"), call("12", "35"), call("12", "2001-01-01 00:01:00")};
    older.filterMessages();
    EXPECT_EQ(older.RecoveredFiltered.size(), 2U);
    sql("ALTER TABLE call RENAME TO ZCALLRECORD");
    newer.RecoveredData = {call("12", "34")};
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
    EXPECT_EQ(call->value("Z_PK"), "7");
    EXPECT_EQ(call->value("Z_ENT"), "2");
    EXPECT_EQ(call->value("Z_OPT"), "1");
    EXPECT_EQ(call->value("ZANSWERED"), "0");
    EXPECT_EQ(call->value("ZCALLTYPE"), "5");
    EXPECT_EQ(call->value("ZDATE"), "2001-09-09T01:46:40+0000") << "the first four bytes";
    EXPECT_EQ(call->value("ZDURATION"), "65");
    EXPECT_EQ(call->value("ZADDRESS"), "5551234");
    EXPECT_EQ(call->value("ZISO_COUNTRY_CODE"), "de");
    EXPECT_EQ(call->value("ZNAME"), std::nullopt);
    EXPECT_EQ(call->value("ZMUSIC"), std::nullopt);
}

TEST_F(CallScanner, ReadsOddLengthsAsItAlwaysDid) {
    // A row id of two bytes, and of one when the byte before it is 128.
    EXPECT_EQ(scan(record(bytes({0x81, 5}), types, values))->value("Z_PK"), "133");
    EXPECT_EQ(scan(record(bytes({0x80, 5}), types, values))->value("Z_PK"), "5");
    // The length of the row stands one or two bytes before it.
    const std::pair<std::string, int> lengths[] = {
        {bytes({40, 7}), 40}, {bytes({40, 0x81, 5}), 40}, {bytes({0x82, 1, 7}), 257}};
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
    struct Case {
        int type;
        int originated;
        const char* text;
    };
    for (const auto& [type, originated, text] :
         {Case{1, 9, "Outgoing Call -Answered"}, Case{1, 8, "Outgoing Call -Not answered"},
          Case{0, 9, "Incoming Call -Answered"}, Case{0, 8, "Incoming Call -Not answered"}}) {
        auto changed = types;
        changed[3] = static_cast<char>(type);
        changed[7] = static_cast<char>(originated);
        auto data = values;
        if (type == 0) data.erase(1, 1);
        const auto row =
            CallHistoryRecoveryAlgo::toCallLog(*scan(record(bytes({1, 1}), changed, data)));
        EXPECT_EQ(row->CallType, text);
        EXPECT_EQ(row->PhoneNumber, "5551234");
        EXPECT_EQ(row->CallDuration, 65);
        EXPECT_EQ(row->LocalTime, "2001-09-09T01:46:40+0000");
    }
}

TEST_F(CallScanner, WalksTheStoreForRowsThatAreNotLive) {
    database = folder / CallHistoryIOS8SqliteDbName;
    state.CALLHISTORY_DATABASE = CallHistoryIOS8SqliteDbName;
    sql("CREATE TABLE ZCALLRECORD (Z_PK INTEGER PRIMARY KEY); INSERT INTO ZCALLRECORD VALUES (3)");
    const std::string padding(100, 'x');
    const auto store = readWholeFile(database) + padding + record(bytes({1, 3}), types, values) +
                       padding + record(bytes({1, 4}), types, values) + padding +
                       record(bytes({1, 0}), types, values) + padding;
    writeWholeFile(database, store);
    state.DeletedCallLog = {std::make_shared<CallLog>()};
    CallHistoryRecoveryAlgo scanner(state);
    EXPECT_TRUE(state.DeletedCallLog.empty());
    scanner.getBufferFromHaxFile();
    scanner.fetchCallHistoryFrom_ZCALLRECORD_Table();
    ASSERT_EQ(state.DeletedCallLog.size(), 1U) << "row 3 is live, row 0 is none";
    EXPECT_EQ(state.DeletedCallLog[0]->SlNo, 4);
    EXPECT_EQ(state.DeletedCallLogCount, 1);

    std::filesystem::remove(database);
    CallHistoryRecoveryAlgo nothing(state);
    nothing.getBufferFromHaxFile();
    nothing.fetchCallHistoryFrom_ZCALLRECORD_Table();
    EXPECT_TRUE(state.DeletedCallLog.empty());
}

// The first 32 bytes and the last 18 are never where a header begins.
TEST_F(CallScanner, LeavesTheEndsOfTheStoreAlone) {
    database = folder / CallHistoryIOS8SqliteDbName;
    const auto one = record(bytes({1, 4}), types, values);
    for (const auto& [before, found] : {std::pair{29U, 0U}, std::pair{30U, 1U}}) {
        writeWholeFile(database, std::string(before, 'x') + one + std::string(30, 'x'));
        CallHistoryRecoveryAlgo scanner(state);
        scanner.getBufferFromHaxFile();
        scanner.fetchCallHistoryFrom_ZCALLRECORD_Table();
        EXPECT_EQ(state.DeletedCallLog.size(), found) << before;
    }
}

}  // namespace
}  // namespace salvor
