#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <stop_token>

#include "carving/DataPosition.h"
#include "recovery/AbstractSqLiteRecovery.h"
#include "recovery/ColumnAttributes.h"

namespace salvor {

/// What the carvers of all categories share: `Engine` (pages as SQLite left them, or whole) fills
/// one `Record` per carved row, column by column through the subclass's table of attribute names.
/// Without patterns a run yields nothing.
template <class Engine, class Record>
class RecordCarver : public Engine {
  public:
    void DoRecoveryPath(const std::filesystem::path& path) override {
        this->fullDBPath = path.string();
        this->tablePatterns = choosePatterns();
        this->_hasRecoveredCurrentObject = false;
        beforeRecovery();
        Engine::DoRecoveryPath(path);
        afterRecovery();
    }

  protected:
    using Attributes = std::span<const ColumnAttribute<Record>>;

    RecordCarver(ScanState& state, std::stop_token cancelled, Attributes attributes)
        : Engine(state, std::move(cancelled)), attributes_(attributes) {}

    virtual TablePatterns choosePatterns() = 0;
    virtual void beforeRecovery() {}
    virtual void afterRecovery() {}
    /// A row was carved into `record`.
    virtual void recordCarved(const std::shared_ptr<Record>& record) = 0;
    /// Whether a row none of whose columns filled anything is passed over.
    virtual bool needsRecoveredMark() const { return true; }

    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        const auto* mapping = pattern.mappingForColumn(column);
        if (mapping == nullptr || this->_recObject == nullptr) return;
        this->_field = mapping->Name;
        this->_hasRecoveredCurrentObject = true;
        storeColumn<Record>(attributes_, mapping->Name, static_cast<Record&>(*this->_recObject),
                            value);
    }

    std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject() override {
        auto record = std::make_shared<Record>();
        record->Recovered = true;
        return record;
    }

    void addRecoveredObject() override {
        if (needsRecoveredMark() && !this->_hasRecoveredCurrentObject) return;
        this->_hasRecoveredCurrentObject = false;
        recordCarved(std::static_pointer_cast<Record>(this->_recObject));
    }

    std::int32_t verifyDataPosition(Bytes text) override {
        return standardDataPosition(this->_field, text);
    }

  private:
    Attributes attributes_;
};

}  // namespace salvor
