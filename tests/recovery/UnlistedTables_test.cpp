#include <set>

#include "recovery/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "recovery/NoteBodiesSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

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
