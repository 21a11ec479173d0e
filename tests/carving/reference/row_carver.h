#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "scan/ScanState.h"

namespace salvor::reference {

/// Made before the carver that refers to it.
struct OwnState {
    ScanState state;
};

/// The real engine with rows of the shape in which the literal one tells its own: every mapped
/// column under its name. Rows with a known row id are left out only when asked to.
template <class Engine>
class RowCarver : private OwnState, public Engine {
  public:
    explicit RowCarver(bool deduplicate = false)
        : Engine(OwnState::state), deduplicate_(deduplicate) {}

    using Engine::_processOffset;

    std::vector<CarvedRow> rows;

  protected:
    std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject() override {
        row_ = {};
        return std::make_shared<baseRecoveryObject>();
    }
    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        const auto* mapping = pattern.mappingForColumn(column);
        if (mapping == nullptr) return;
        this->_field = mapping->Name;
        const auto known =
            std::find_if(row_.columns.begin(), row_.columns.end(),
                         [&](const auto& one) { return one.first == mapping->Name; });
        if (known == row_.columns.end())
            row_.columns.emplace_back(mapping->Name, value);
        else
            known->second = value;
    }
    std::int32_t verifyDataPosition(Bytes text) override {
        if (this->_field != "ZStandZAid") return this->kNoCorrection;
        const auto dash = std::find(text.begin(), text.end(), '-');
        return dash == text.end() ? -11 : static_cast<std::int32_t>(dash - text.begin()) - 10;
    }
    void addRecoveredObject() override {
        if (deduplicate_) this->rememberRowId(this->_recObject->RowId);
        row_.rowId = this->_recObject->RowId;
        row_.origin = this->_recObject->Origin.value();
        rows.push_back(row_);
    }

  private:
    bool deduplicate_;
    CarvedRow row_;
};

}  // namespace salvor::reference
