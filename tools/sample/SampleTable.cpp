#include "tools/sample/SampleTable.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace salvor {

void SampleColumns::create(SqliteFile& database, const std::string& table) const {
    std::string sql;
    for (const auto& column : columns_) {
        sql += (sql.empty() ? "CREATE TABLE " + table + " (" : ", ") + column.name;
        if (!column.type.empty()) sql += " " + column.type;
    }
    database.execute(sql + ")");
}

SqliteRow SampleColumns::row(const std::map<std::string, SqliteValue>& values) const {
    for (const auto& [name, value] : values) {
        if (!has(name)) throw std::runtime_error("no column " + name);
    }
    SqliteRow row;
    for (const auto& column : columns_) {
        const auto given = values.find(column.name);
        row.push_back(given == values.end() ? column.value : given->second);
    }
    return row;
}

bool SampleColumns::has(const std::string& name) const {
    return std::any_of(columns_.begin(), columns_.end(),
                       [&](const auto& column) { return column.name == name; });
}

void SampleColumns::insert(std::size_t at, const std::vector<SampleColumn>& more) {
    columns_.insert(columns_.begin() + static_cast<std::ptrdiff_t>(at), more.begin(), more.end());
}

SampleTable::SampleTable(SampleFolder& folder, SqliteFile& database, std::string table,
                         std::string key)
    : folder_(folder), database_(database), table_(std::move(table)), key_(std::move(key)) {}

void SampleTable::fill(std::int64_t rows, const MakeRecord& record) {
    for (std::int64_t i = 0; i < rows; ++i) {
        auto made = record(static_cast<std::int64_t>(records_.size()) + 1);
        made.truth.table = table_;
        made.truth.rowId = database_.insert(table_, made.row);
        records_.push_back(std::move(made));
    }
}

void SampleTable::remove(SampleRecord& record, const char* how) {
    database_.execute("DELETE FROM " + table_ + " WHERE " + key_ + "=?", {record.truth.rowId});
    record.truth.how = how;
}

void SampleTable::deleteSome(const std::function<void(std::int64_t rowId)>& alsoDelete) {
    if (!folder_.options().deletions) return;
    const std::size_t runBegin = records_.size() / 3;
    const std::size_t runEnd = 2 * records_.size() / 3;
    for (std::size_t i = 0; i < records_.size(); ++i) {
        const bool inRun = i >= runBegin && i < runEnd;
        if (!inRun && i % 7 != 3) continue;
        remove(records_[i], inRun ? "run" : "alone");
        if (alsoDelete) alsoDelete(records_[i].truth.rowId);
    }
}

void SampleTable::finish(std::int64_t newRows, const MakeRecord& record) {
    if (folder_.options().deletions) fill(newRows, record);
    auto& truth = folder_.truth();
    for (auto& one : records_) {
        auto& rows = one.truth.how.empty() ? truth.live : truth.deleted;
        rows.push_back(std::move(one.truth));
    }
    records_.clear();
}

std::string sampleWords(std::int64_t number, std::size_t words) {
    static constexpr const char* kSyllables[] = {"ba", "do", "fi", "gu", "ke", "lo", "mi", "nu",
                                                 "pa", "ro", "se", "ti", "va", "wo", "ze", "ча"};
    SampleRandom random(static_cast<std::uint64_t>(number) * 7919 + words);
    std::string text;
    for (std::size_t word = 0; word < words; ++word) {
        if (word != 0) text += ' ';
        const auto syllables = random.between(2, 4);
        for (std::int64_t i = 0; i < syllables; ++i) text += random.pick(kSyllables);
    }
    return text + " " + std::to_string(number);
}

SqliteLayout sampleLayout(const SampleFolder& folder, AutoVacuum autoVacuum) {
    const auto& options = folder.options();
    return {options.pageSize, options.autoVacuum.value_or(autoVacuum),
            folder.device().writeAheadLog,
            options.secureDelete.value_or(folder.device().secureDelete)};
}

}  // namespace salvor
