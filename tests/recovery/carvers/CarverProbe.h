#pragma once

#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <memory>
#include <string>

#include "app/state/ScanState.h"
#include "carving/SqLiteTableSignatures.h"
#include "records/ColumnValue.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {

/// A carver whose hooks a test calls in the engine's place.
template <class Carver, class Record>
class CarverProbe : public Carver {
  public:
    using Carver::Carver;

    /// A new current record.
    Record& begin() {
        this->_recObject = this->GetNewRecoveryObject();
        return static_cast<Record&>(*this->_recObject);
    }
    /// Column 7 of the pattern, which maps it to `name`, has this value.
    void fill(const std::string& name, const OptionalColumnValue& value) {
        TablePattern pattern;
        pattern.AttributesMapping = {{name, 7}, {"text that no carver knows", 8}};
        this->FillModel(9, value, pattern);
        this->FillModel(8, value, pattern);
        this->FillModel(7, value, pattern);
    }
    /// A record that holds the one value.
    Record& filled(const std::string& name, const OptionalColumnValue& value) {
        Record& record = begin();
        fill(name, value);
        return record;
    }
    void add() { this->addRecoveredObject(); }
    /// The correction that a text column of this name asks for.
    std::int32_t position(const std::string& name, std::string_view text) {
        begin();
        fill(name, std::string());
        return this->verifyDataPosition(
            Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    }
    const auto& patterns() const { return this->tablePatterns; }
};

/// Adds a signature of one pattern, as the signatures file would.
inline void addSignature(ScanState& state, const std::string& database, const std::string& table,
                         const std::string& header,
                         std::vector<salvor::AttributesMapping> mappings) {
    auto all = std::make_shared<SqLiteTableSignatures>();
    if (state.recoverySignatures != nullptr)
        all->tableSignatures = state.recoverySignatures->tableSignatures;
    auto pattern = std::make_shared<TablePattern>();
    pattern->hasHeader = true;
    pattern->headerPattern = header;
    pattern->AttributesMapping = std::move(mappings);
    auto signature = std::make_shared<SQLiteSignature>();
    signature->Name = database == "ChatStorage.sqlite" ? "net.whatsapp.WhatsApp" : "HomeDomain";
    signature->Database = database;
    signature->Table = table;
    signature->TablePatterns = {pattern};
    all->tableSignatures.push_back(std::move(signature));
    state.recoverySignatures = std::move(all);
}

/// A small database in the state's backup folder, and what its tables hold.
class CategoryCarverTest : public testing::Test {
  protected:
    CategoryCarverTest() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        state.BACKUP_DIRECTORY = folder.path().string();
    }

    /// Runs `sql` on the database, which is made if need be. Deleted bytes stay where they are.
    void sql(const std::string& statements) const {
        if (!std::filesystem::exists(database)) {
            SqliteFile fresh(database, {});
            // The second page of a database is never searched; this table takes it.
            fresh.execute("CREATE TABLE unused (x)");
            fresh.close();
        }
        SqliteFile file(database);
        file.execute("PRAGMA secure_delete = OFF");
        file.execute(statements);
        file.close();
    }

    template <class Row>
    static std::vector<std::string> texts(const List<Row>& rows, Text Row::*member) {
        std::vector<std::string> found;
        for (const auto& row : rows) found.push_back(((*row).*member).value_or("(absent)"));
        return found;
    }

    TempFolder folder;
    std::filesystem::path database = folder / "database";
    ScanState state;
};

using Texts = std::vector<std::string>;

}  // namespace salvor
