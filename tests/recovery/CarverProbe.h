#pragma once

#include <memory>
#include <utility>

#include "records/ColumnValue.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Signatures.h"
#include "tests/support/Told.h"

namespace salvor {

/// A carver whose hooks a test calls in the engine's place.
template <class Carver, class Record>
class CarverProbe : public Carver {
  public:
    using Carver::Carver;
    using Columns = std::vector<std::pair<std::string, OptionalColumnValue>>;

    /// A new current record.
    Record& begin() {
        this->_recObject = this->GetNewRecoveryObject();
        return static_cast<Record&>(*this->_recObject);
    }
    /// Column 7 of the pattern, which maps it to `name`, has this value.
    void fill(const std::string& name, const OptionalColumnValue& value) {
        pattern_.AttributesMapping = {{name, 7}, {"text that no carver knows", 8}};
        this->FillModel(9, value, pattern_);
        this->FillModel(8, value, pattern_);
        this->FillModel(7, value, pattern_);
    }
    /// A record that holds these values.
    Record& filled(const Columns& columns) {
        Record& record = begin();
        for (const auto& [name, value] : columns) fill(name, value);
        return record;
    }
    /// Such a record, completed.
    void add(const Columns& columns) {
        filled(columns);
        this->addRecoveredObject();
    }
    /// The correction that a text column of this name asks for.
    std::int32_t position(const std::string& name, std::string_view text) {
        filled({{name, std::string()}});
        return this->verifyDataPosition(
            Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    }
    const auto& patterns() const { return this->tablePatterns; }

  private:
    TablePattern pattern_;
};

/// A scan over one small database.
class CategoryCarverTest : public ScanFixture {
  protected:
    /// The table's only pattern.
    void signature(const std::string& name, const std::string& table, const std::string& header,
                   std::vector<AttributesMapping> names, const std::string& domain = "HomeDomain") {
        addPattern(state, domain, name, table, makePattern(header, std::move(names)));
    }
    /// Runs `statements` on the database and leaves deleted rows in it.
    void sql(const std::string& statements, const std::vector<DeletedRows>& deleted = {}) const {
        store("database", statements, deleted);
    }

    std::filesystem::path database = folder / "database";
};

}  // namespace salvor
