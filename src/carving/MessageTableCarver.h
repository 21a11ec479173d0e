#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

#include "carving/AbstractSQLiteRecoveryFullSearch.h"
#include "carving/AbstractSqLiteRecovery.h"
#include "carving/ColumnAttributes.h"
#include "carving/DataPosition.h"
#include "carving/MessagePatterns.h"

namespace salvor {

/// What the carvers of the message database share: `Engine` (pages as SQLite left them, or whole)
/// fills one `Record` per carved row of one table, column by column through the subclass's table
/// of attribute names. A table without a signature yields nothing.
template <class Engine, class Record>
class MessageTableCarver : public Engine {
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

    /// `table` names the signature; with a `version` the patterns are narrowed to it.
    MessageTableCarver(ScanState& state, std::stop_token cancelled, std::string table,
                       Attributes attributes, std::optional<std::string> version = std::nullopt)
        : Engine(state, std::move(cancelled)),
          table_(std::move(table)),
          version_(std::move(version)),
          attributes_(attributes) {}

    virtual void beforeRecovery() {}
    virtual void afterRecovery() {}
    /// A row was carved into `record`.
    virtual void recordCarved(const std::shared_ptr<Record>& record) = 0;

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
        if (!this->_hasRecoveredCurrentObject) return;
        this->_hasRecoveredCurrentObject = false;
        recordCarved(std::static_pointer_cast<Record>(this->_recObject));
    }

    std::int32_t verifyDataPosition(Bytes text) override {
        return standardDataPosition(this->_field, text);
    }

  private:
    TablePatterns choosePatterns() {
        return version_ ? narrowedMessagePatterns(this->state_, table_, *version_)
                        : messagePatterns(this->state_, table_);
    }

    std::string table_;
    std::optional<std::string> version_;
    Attributes attributes_;
};

}  // namespace salvor
