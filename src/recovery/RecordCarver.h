#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>

#include "carving/DataPosition.h"
#include "recovery/AbstractSqLiteRecovery.h"
#include "recovery/SignatureUse.h"

namespace salvor {

/// What the carvers of all categories share: `Base` (searching the unused space of pages, or pages
/// whole) fills one `Record` per carved row, column by column through the subclass's table of
/// attribute names. The patterns come from one signature; without any a run yields nothing.
template <class Base, class Record>
class RecordCarver : public Base {
  public:
    void DoRecoveryPath(const std::filesystem::path& path) override {
        this->fullDBPath = path.string();
        this->tablePatterns = choosePatterns();
        this->_hasRecoveredCurrentObject = false;
        beforeRecovery();
        Base::DoRecoveryPath(path);
        afterRecovery();
    }

  protected:
    RecordCarver(ScanState& state, std::stop_token cancelled, const SignatureUse<Record>& use)
        : Base(state, std::move(cancelled)), use_(use) {}

    virtual TablePatterns choosePatterns() { return patternsOf(this->state_, use_.key); }
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
        storeColumn<Record>(use_.attributes, mapping->Name, static_cast<Record&>(*this->_recObject),
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
    SignatureUse<Record> use_;
};

}  // namespace salvor
