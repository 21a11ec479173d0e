#include <functional>
#include <set>

#include "carving/WhatsAppMessagesSQLiteRecovery.h"
#include "recovery/carvers/AppointmentsSQLiteRecovery.h"
#include "recovery/carvers/CallCarver.h"
#include "recovery/carvers/ContactSearchsSQLiteRecovery.h"
#include "recovery/carvers/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/carvers/ContactsSQLiteRecovery.h"
#include "recovery/carvers/NoteBodiesSQLiteRecovery.h"
#include "recovery/carvers/NotesSQLiteRecovery.h"
#include "tests/recovery/carvers/CarverProbe.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

std::shared_ptr<SqLiteTableSignatures> shippedSignatures() {
    auto signatures = std::make_shared<SqLiteTableSignatures>();
    EXPECT_EQ(signatures->loadSignatures(SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml"),
              "");
    return signatures;
}

template <class Record>
bool sameFields(const Record& one, const Record& other) {
    bool same = true;
    const auto compare = [&](const auto& field) {
        if constexpr (requires { one.*(field.member) == other.*(field.member); })
            same = same && one.*(field.member) == other.*(field.member);
    };
    std::apply([&](const auto&... fields) { (compare(fields), ...); }, Record::fields());
    return same;
}

/// Whether a value under this name changes a fresh record.
template <class Carver, class Record>
bool knowsName(const std::string& name) {
    ScanState state;
    CarverProbe<Carver, Record> carver(state);
    const Record fresh = carver.begin();
    for (const OptionalColumnValue& value :
         {OptionalColumnValue("7"), OptionalColumnValue(std::int64_t{7}),
          OptionalColumnValue(7.5)}) {
        if (!sameFields(carver.filled(name, value), fresh)) return true;
    }
    return false;
}

struct ShippedTable {
    const char* domain;
    const char* database;
    const char* table;
    std::vector<bool (*)(const std::string&)> carvers;
};

// A name that no carver knows is a column lost without a word.
TEST(ShippedCategories, MapOnlyNamesThatTheirCarversKnow) {
    const auto signatures = shippedSignatures();
    const ShippedTable tables[] = {
        {"net.whatsapp.WhatsApp",
         "ChatStorage.sqlite",
         "ZWAMESSAGE",
         {knowsName<WhatsAppMessagesSQLiteRecovery, WhatsAppMessage>}},
        {"HomeDomain", "notes.sqlite", "ZNOTE", {knowsName<NotesSQLiteRecovery, Note>}},
        {"HomeDomain",
         "notes.sqlite",
         "ZNOTEBODY",
         {knowsName<NoteBodiesSQLiteRecovery, NoteBody>}},
        {"HomeDomain",
         "notes.sqlite",
         "ZICNOTEDATA",
         {knowsName<NoteBodiesIOS9SQLiteRecovery, NoteBody>}},
        {"HomeDomain",
         "AddressBook.sqlite",
         "ABPersonFullTextSearch_content",
         {knowsName<ContactSearchsSQLiteRecovery, Contact>}},
        {"HomeDomain",
         "AddressBook.sqlite",
         "ABPerson",
         {knowsName<ContactsSQLiteRecovery, Contact>}},
        {"HomeDomain",
         "AddressBook.sqlite",
         "ABMultiValue",
         {knowsName<ContactsABMultiValueSQLiteRecovery, ContactABMultiValue>}},
        // Patterns of both databases stand under one key.
        {"HomeDomain",
         "CallHistory.storedata",
         "zcallrecord",
         {knowsName<CallHistorySQLiteRecovery, CallHistory>,
          knowsName<CallHistoryIos8Recovery, CallHistory>}},
        {"HomeDomain",
         "Calendar.sqlite",
         "CalendarItem",
         {knowsName<AppointmentsSQLiteRecovery, Appointment>}},
    };
    for (const auto& [domain, database, table, carvers] : tables) {
        const auto signature = signatures->Find(domain, database, table);
        ASSERT_NE(signature, nullptr) << table;
        EXPECT_FALSE(signature->TablePatterns.empty()) << table;
        for (const auto& pattern : signature->TablePatterns) {
            for (const auto& mapping : pattern->AttributesMapping) {
                const bool known = std::any_of(carvers.begin(), carvers.end(),
                                               [&](auto knows) { return knows(mapping.Name); });
                EXPECT_TRUE(known) << table << ": " << mapping.Name;
            }
        }
    }
}

// The tables that no scan searches, or whose rows it only joins to others. Floors a little below
// what was measured; EveryCategory holds those of the other tables.
class UnlistedTables : public CategoryCarverTest {
  protected:
    void write(int ios) {
        state = std::make_unique<ScanState>();
        state->recoverySignatures = shippedSignatures();
        SampleOptions options;
        options.ios = ios;
        options.secureDelete = false;
        options.messages = 10;
        sample = SampleBackup::write(folder / std::to_string(ios), options);
    }
    /// How many deleted rows of `table` are among what was carved, told by their keys.
    std::size_t back(const char* table, const std::set<std::string>& carved,
                     const std::function<std::string(const TruthRow&)>& keyOf) const {
        std::size_t count = 0;
        for (const auto& row : SampleTruth::of(sample.truth.deleted, table))
            count += carved.count(keyOf(row));
        return count;
    }
    template <class Record, class KeyOf>
    static std::set<std::string> keys(const List<baseRecoveryObject>& records, KeyOf keyOf) {
        std::set<std::string> all;
        for (const auto& record : records) all.insert(keyOf(dynamic_cast<const Record&>(*record)));
        return all;
    }
    std::filesystem::path addressBook() const {
        return sample.file("HomeDomain", "Library/AddressBook/AddressBook.sqlitedb");
    }

    std::unique_ptr<ScanState> state;
    SampleBackup sample;
};

TEST_F(UnlistedTables, PersonsComeBack) {
    for (const int ios : {4, 7, 8}) {
        write(ios);
        ContactsSQLiteRecovery carver(*state);
        carver.setSignature(addressBook());
        carver.DoRecoveryPath(addressBook());
        const auto found = keys<Contact>(carver.RecoveredData, [](const Contact& one) {
            return one.FirstName.value_or("") + "|" + one.LastName.value_or("");
        });
        const auto keyOf = [](const TruthRow& row) {
            const auto* last = std::get_if<std::string>(&row.values.at("last"));
            return row.text.value_or("") + "|" + (last != nullptr ? *last : "");
        };
        EXPECT_GE(back("ABPerson", found, keyOf), 5U) << ios;
    }
}

TEST_F(UnlistedTables, NumbersOfPersonsComeBack) {
    write(7);
    ContactsABMultiValueSQLiteRecovery carver(*state);
    carver.DoRecoveryPath(addressBook());
    const auto found = keys<ContactABMultiValue>(
        carver.RecoveredData, [](const auto& one) { return one.value.value_or(""); });
    EXPECT_GE(back("ABPerson", found, [](const TruthRow& row) { return row.handle; }), 3U);
}

TEST_F(UnlistedTables, NoteBodiesComeBack) {
    write(7);
    NoteBodiesSQLiteRecovery carver(*state);
    carver.DoRecoveryPath(sample.file("HomeDomain", "Library/Notes/notes.sqlite"));
    const auto found = keys<NoteBody>(carver.RecoveredFiltered,
                                      [](const NoteBody& one) { return one.Content.value_or(""); });
    EXPECT_GE(back("ZNOTEBODY", found, [](const TruthRow& row) { return row.text.value_or(""); }),
              3U);
}

TEST_F(UnlistedTables, RowsOfTheNewerNoteStoreComeBack) {
    write(9);
    NoteBodiesIOS9SQLiteRecovery carver(*state);
    carver.DoRecovery(sample.file("AppDomainGroup-group.com.apple.notes", "NoteStore.sqlite"));
    const auto found = keys<NoteBody>(carver.RecoveredFiltered, [](const NoteBody& one) {
        EXPECT_EQ(one.Content, std::nullopt) << "compressed bytes are no text";
        EXPECT_NE(one.Owner, 0);
        return std::to_string(one.RowId);
    });
    EXPECT_GE(
        back("ZICNOTEDATA", found, [](const TruthRow& row) { return std::to_string(row.rowId); }),
        4U);
}

}  // namespace
}  // namespace salvor
