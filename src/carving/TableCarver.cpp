#include "carving/TableCarver.h"

#include <algorithm>

#include "carving/AbstractSQLiteRecoveryFullSearch.h"
#include "carving/DataPosition.h"

namespace salvor {
namespace {

using RowSink = std::function<void(const CarvedRow&)>;

/// A carver without a record class of its own: keeps every mapped column under its name.
template <class Engine>
class RowCarver : public Engine {
  public:
    RowCarver(ScanState& state, std::stop_token cancelled, const RowSink& found)
        : Engine(state, std::move(cancelled)), found_(found) {}

  protected:
    std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject() override {
        row_.columns.clear();
        return std::make_shared<baseRecoveryObject>();
    }

    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        const AttributesMapping* mapping = pattern.mappingForColumn(column);
        if (mapping == nullptr) return;
        this->_field = mapping->Name;
        this->_hasRecoveredCurrentObject = true;
        auto& columns = row_.columns;
        const auto known = std::find_if(columns.begin(), columns.end(), [&](const auto& one) {
            return one.first == mapping->Name;
        });
        if (known == columns.end()) {
            columns.emplace_back(mapping->Name, value);
        } else {
            known->second = value;
        }
    }

    void addRecoveredObject() override {
        this->rememberRowId(this->_recObject->RowId);
        row_.rowId = this->_recObject->RowId;
        row_.origin = *this->_recObject->Origin;
        found_(row_);
        this->_hasRecoveredCurrentObject = false;
    }

    std::int32_t verifyDataPosition(Bytes text) override {
        return standardDataPosition(this->_field, text);
    }

  private:
    const RowSink& found_;
    CarvedRow row_;
};

template <class Engine>
void carve(const TablePatterns& patterns, const TableCarveOptions& options,
           const std::filesystem::path& file, std::stop_token cancelled, const RowSink& found) {
    ScanState state;
    RowCarver<Engine> carver(state, std::move(cancelled), found);
    carver.tablePatterns = patterns;
    carver.setWorkingOnCallList(options.callList);
    carver.DoRecoveryPath(file);
}

}  // namespace

void carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                const std::filesystem::path& file, std::stop_token cancelled,
                const std::function<void(const CarvedRow&)>& found) {
    const auto signature = signatures.Find(options.domain, options.database, options.table);
    if (!signature) return;
    const TablePatterns patterns = options.version
                                       ? signature->FindPatternsByVersion(*options.version)
                                       : signature->TablePatterns;
    const auto run = options.fullSearch ? carve<AbstractSQLiteRecoveryFullSearch>
                                        : carve<AbstractSqLiteRecovery>;
    run(patterns, options, file, std::move(cancelled), found);
}

}  // namespace salvor
