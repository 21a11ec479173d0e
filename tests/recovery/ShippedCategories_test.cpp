#include <algorithm>
#include <set>

#include "recovery/AppointmentsSQLiteRecovery.h"
#include "recovery/CallCarver.h"
#include "recovery/ContactSearchsSQLiteRecovery.h"
#include "recovery/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "recovery/NoteBodiesSQLiteRecovery.h"
#include "recovery/NotesSQLiteRecovery.h"
#include "recovery/WhatsAppMessagesSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

/// Whether a value under this name changes a fresh record.
template <class Carver, class Record>
bool knowsName(const std::string& name) {
    ScanState state;
    CarverProbe<Carver, Record> carver(state);
    const std::string fresh = told(carver.begin());
    const OptionalColumnValue values[] = {"7", std::int64_t{7}, 7.5};
    return std::any_of(std::begin(values), std::end(values), [&](const auto& value) {
        return told(carver.filled({{name, value}})) != fresh;
    });
}

struct ShippedTable {
    const char* database;
    const char* table;
    std::vector<bool (*)(const std::string&)> carvers;
    const char* domain = "HomeDomain";
};

// A name that no carver knows is a column lost without a word.
TEST(ShippedCategories, MapOnlyNamesThatTheirCarversKnow) {
    const auto signatures = shippedSignatures();
    const ShippedTable tables[] = {
        {"ChatStorage.sqlite",
         "ZWAMESSAGE",
         {knowsName<WhatsAppMessagesSQLiteRecovery, WhatsAppMessage>},
         "net.whatsapp.WhatsApp"},
        {"notes.sqlite", "ZNOTE", {knowsName<NotesSQLiteRecovery, Note>}},
        {"notes.sqlite", "ZNOTEBODY", {knowsName<NoteBodiesSQLiteRecovery, NoteBody>}},
        {"notes.sqlite", "ZICNOTEDATA", {knowsName<NoteBodiesIOS9SQLiteRecovery, NoteBody>}},
        {"AddressBook.sqlite",
         "ABPersonFullTextSearch_content",
         {knowsName<ContactSearchsSQLiteRecovery, Contact>}},
        {"AddressBook.sqlite", "ABPerson", {knowsName<ContactsSQLiteRecovery, Contact>}},
        {"AddressBook.sqlite",
         "ABMultiValue",
         {knowsName<ContactsABMultiValueSQLiteRecovery, ContactABMultiValue>}},
        // Patterns of both databases stand under one key.
        {"CallHistory.storedata",
         "zcallrecord",
         {knowsName<CallHistorySQLiteRecovery, CallHistory>,
          knowsName<CallHistoryIos8Recovery, CallHistory>}},
        {"Calendar.sqlite", "CalendarItem", {knowsName<AppointmentsSQLiteRecovery, Appointment>}},
    };
    for (const auto& [database, table, carvers, domain] : tables) {
        const auto signature = signatures->Find(domain, database, table);
        ASSERT_NE(signature, nullptr) << table;
        EXPECT_FALSE(signature->TablePatterns.empty()) << table;
        std::set<std::string> names;
        for (const auto& pattern : signature->TablePatterns)
            for (const auto& mapping : pattern->AttributesMapping) names.insert(mapping.Name);
        for (const auto& name : names) {
            EXPECT_TRUE(std::any_of(carvers.begin(), carvers.end(),
                                    [&](auto knows) { return knows(name); }))
                << table << ": " << name;
        }
    }
}

// The tables that no scan searches, or whose rows it only joins to others. Floors a little below
// what was measured; EveryCategory holds those of the other tables.
class UnlistedTables : public CategoryCarverTest {
  protected:
    void write(int ios) {
        SampleOptions options;
        options.ios = ios;
        options.secureDelete = false;
        options.messages = 10;
        sample = SampleBackup::write(folder / std::to_string(ios), options);
        scan = std::make_unique<ScanState>();
        scan->recoverySignatures = shippedSignatures();
    }
    /// How many deleted rows of `table` are among what was carved, told by their keys.
    template <class Record, class KeyOfRecord, class KeyOfRow>
    std::size_t back(const List<baseRecoveryObject>& carved, KeyOfRecord keyOfRecord,
                     const char* table, KeyOfRow keyOfRow) const {
        std::set<std::string> found;
        for (const auto& record : carved)
            found.insert(keyOfRecord(dynamic_cast<const Record&>(*record)));
        std::size_t count = 0;
        for (const auto& row : SampleTruth::of(sample.truth.deleted, table))
            count += found.count(keyOfRow(row));
        return count;
    }
    std::filesystem::path addressBook() const {
        return sample.file("HomeDomain", "Library/AddressBook/AddressBook.sqlitedb");
    }

    std::unique_ptr<ScanState> scan;
    SampleBackup sample;
};

TEST_F(UnlistedTables, PersonsComeBack) {
    for (const int ios : {4, 7, 8}) {
        write(ios);
        ContactsSQLiteRecovery carver(*scan);
        carver.setSignature(addressBook());
        carver.DoRecoveryPath(addressBook());
        const auto nameOf = [](const Contact& one) {
            return one.FirstName.value_or("") + "|" + one.LastName.value_or("");
        };
        const auto keyOf = [](const TruthRow& row) {
            const auto* last = std::get_if<std::string>(&row.values.at("last"));
            return row.text.value_or("") + "|" + (last != nullptr ? *last : "");
        };
        EXPECT_GE(back<Contact>(carver.RecoveredData, nameOf, "ABPerson", keyOf), 5U) << ios;
    }
}

TEST_F(UnlistedTables, NumbersOfPersonsComeBack) {
    write(7);
    ContactsABMultiValueSQLiteRecovery carver(*scan);
    carver.DoRecoveryPath(addressBook());
    EXPECT_GE(back<ContactABMultiValue>(
                  carver.RecoveredData, [](const auto& one) { return one.value.value_or(""); },
                  "ABPerson", [](const TruthRow& row) { return row.handle; }),
              3U);
}

TEST_F(UnlistedTables, NoteBodiesComeBack) {
    write(7);
    NoteBodiesSQLiteRecovery carver(*scan);
    carver.DoRecoveryPath(sample.file("HomeDomain", "Library/Notes/notes.sqlite"));
    EXPECT_GE(
        back<NoteBody>(
            carver.RecoveredFiltered, [](const NoteBody& one) { return one.Content.value_or(""); },
            "ZNOTEBODY", [](const TruthRow& row) { return row.text.value_or(""); }),
        3U);
}

TEST_F(UnlistedTables, RowsOfTheNewerNoteStoreComeBack) {
    write(9);
    NoteBodiesIOS9SQLiteRecovery carver(*scan);
    carver.DoRecovery(sample.file("AppDomainGroup-group.com.apple.notes", "NoteStore.sqlite"));
    const auto keyOf = [](const NoteBody& one) {
        EXPECT_EQ(one.Content, std::nullopt) << "compressed bytes are no text";
        EXPECT_NE(one.Owner, 0);
        return std::to_string(one.RowId);
    };
    EXPECT_GE(back<NoteBody>(carver.RecoveredFiltered, keyOf, "ZICNOTEDATA",
                             [](const TruthRow& row) { return std::to_string(row.rowId); }),
              4U);
}

}  // namespace
}  // namespace salvor
