#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "recovery/AbstractSqLiteRecovery.h"
#include "recovery/RecordCarver.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Domain, database and table under which the signatures file keeps a carver's patterns.
struct SignatureKey {
    std::string_view domain;
    std::string_view database;
    std::string_view table;
};

/// What the carvers of notes, contacts, calls and calendar events share: their patterns come from
/// one signature, their columns fill one `Record`, and after the pass a filter may compare the
/// result with the live rows.
template <class Record>
class CategoryCarver : public RecordCarver<AbstractSqLiteRecovery, Record> {
  protected:
    using Base = RecordCarver<AbstractSqLiteRecovery, Record>;

    CategoryCarver(ScanState& state, std::stop_token cancelled, SignatureKey key,
                   typename Base::Attributes attributes)
        : Base(state, std::move(cancelled), attributes), key_(key) {}

    /// A statement whose live rows the patterns depend on, "" for none: with an empty live table
    /// no pattern is set and nothing is carved. Deliberate.
    virtual std::string_view liveRowsStatement() const { return {}; }

    TablePatterns choosePatterns() override {
        const auto statement = liveRowsStatement();
        if (!statement.empty()) {
            const auto database = openDatabase();
            if (!database || !database->executeQuery(std::string(statement)).next()) return {};
        }
        return patternsOf(key_);
    }

    TablePatterns patternsOf(const SignatureKey& key) const {
        if (this->state_.recoverySignatures == nullptr) return {};
        const auto signature = this->state_.recoverySignatures->Find(
            std::string(key.domain), std::string(key.database), std::string(key.table));
        return signature ? signature->TablePatterns : TablePatterns{};
    }

    /// Appends to `RecoveredFiltered` what of `RecoveredData` has no live row: `statementFor` gives
    /// the statement that looks for it, or nothing for a record to pass over. A statement that
    /// does not prepare counts as no live row; a database that does not open filters nothing.
    template <class StatementFor>
    void keepRecordsWithoutLiveRow(StatementFor statementFor) {
        if (this->RecoveredData.empty()) return;
        const auto database = openDatabase();
        if (!database) return;
        for (const auto& record : this->RecoveredData) {
            if (this->cancelled_.stop_requested()) return;
            const auto* typed = dynamic_cast<const Record*>(record.get());
            if (typed == nullptr) continue;
            const std::optional<std::string> sql = statementFor(*typed);
            if (sql && !database->executeQuery(*sql).next())
                this->RecoveredFiltered.push_back(record);
        }
    }

    /// " column=value", without quotes (deliberate), or " column IS NULL".
    static std::string equalOrNull(std::string_view column, const Text& value) {
        return " " + std::string(column) + (value ? "=" + *value : " IS NULL");
    }

    /// A connection to the database being carved; null when it does not open.
    std::unique_ptr<FMDBUtils> openDatabase() const {
        auto database = std::make_unique<FMDBUtils>(this->fullDBPath, this->state_.sourcePolicy,
                                                    this->cancelled_);
        return database->openDatabase() ? std::move(database) : nullptr;
    }

  private:
    SignatureKey key_;
};

}  // namespace salvor
