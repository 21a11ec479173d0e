#pragma once

#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "recovery/AbstractSqLiteRecovery.h"
#include "recovery/RecordCarver.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// What the carvers of notes, contacts, calls and calendar events share: an empty live table may
/// keep them from carving, and after the pass a filter may compare the result with the live rows.
template <class Record>
class CategoryCarver : public RecordCarver<AbstractSqLiteRecovery, Record> {
  protected:
    using Base = RecordCarver<AbstractSqLiteRecovery, Record>;

    using Base::Base;

    /// A statement whose live rows the patterns depend on, "" for none: with an empty live table
    /// no pattern is set and nothing is carved. Kept: no-live-row-no-carving.
    virtual std::string_view liveRowsStatement() const { return {}; }

    TablePatterns choosePatterns() override {
        const auto statement = liveRowsStatement();
        if (!statement.empty()) {
            const auto database = openDatabase();
            if (!database || !database->executeQuery(std::string(statement)).next()) return {};
        }
        return Base::choosePatterns();
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

    /// " column=value" (Kept: unquoted-values) or " column IS NULL".
    static std::string equalOrNull(std::string_view column, const Text& value) {
        return fmt::format(" {}{}{}", column, value ? "=" : " IS NULL", value.view());
    }

    /// A connection to the database being carved; null when it does not open.
    std::unique_ptr<FMDBUtils> openDatabase() const {
        auto database = std::make_unique<FMDBUtils>(this->fullDBPath, this->state_.sourcePolicy,
                                                    this->cancelled_);
        return database->openDatabase() ? std::move(database) : nullptr;
    }
};

}  // namespace salvor
