#include "tests/support/RecoveryTally.h"

#include <fmt/format.h>
#include <set>

#include "carving/deep/RecoveryEngine.h"
#include "carving/format/PageStore.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

std::string textOf(const SqliteValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return fmt::format("i{}", *number);
    if (const auto* real = std::get_if<double>(&value)) return fmt::format("r{}", *real);
    if (const auto* text = std::get_if<std::string>(&value)) return "t" + *text;
    if (const auto* blob = std::get_if<SqliteBlob>(&value)) return "b" + blob->bytes;
    return "n";
}

std::string textOf(const deep::RecoveredValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return fmt::format("i{}", *number);
    if (const auto* real = std::get_if<double>(&value)) return fmt::format("r{}", *real);
    if (const auto* text = std::get_if<std::string>(&value)) return "t" + *text;
    if (const auto* raw = std::get_if<deep::RawBytes>(&value))
        return "b" + std::string(raw->bytes.begin(), raw->bytes.end());
    return "n";
}

/// The values of a row as one text, its row id aside; without the first one when that is open.
std::string contentOf(const SampleRow& row, bool open = false) {
    std::string content;
    for (std::size_t i = open ? 1 : 0; i < row.values.size(); ++i)
        content += textOf(row.values[i]) + '\x1F';
    return open ? "open" + content : content;
}

std::string contentOf(const deep::RecoveredRow& row, bool alias) {
    std::string content = row.missing.empty() ? "" : "open";
    for (const auto& column : row.columns)
        if (!alias || column.column != 0) content += textOf(column.value) + '\x1F';
    return content;
}

void count(RecoveryTally::Count& into, bool right) {
    ++(right ? into.right : into.wrong);
}

double share(std::uint64_t part, std::uint64_t all) {
    return all == 0 ? 1 : static_cast<double>(part) / static_cast<double>(all);
}

}  // namespace

void RecoveryTally::add(const RecoverySample& sample, const std::filesystem::path& path) {
    std::map<std::string, std::set<std::int64_t>> deletedRows;
    std::map<std::string, std::int64_t> liveRows;
    for (const bool open : {false, true}) {
        for (const SampleRow& row : sample.deleted())
            deletedRows[contentOf(row, open)].insert(row.rowId);
        for (const SampleRow& row : sample.live()) liveRows[contentOf(row, open)] = row.rowId;
    }

    const auto main = MappedFile::open(path);
    const auto log = MappedFile::open(path.string() + "-wal");
    const auto journal = MappedFile::open(path.string() + "-journal");
    const auto store = PageStore::open(
        {main->bytes(), log ? log->bytes() : Bytes(), journal ? journal->bytes() : Bytes()});
    std::set<std::string> found;
    int noted = 0;
    const auto note = [&](const char* what, const std::string& content) {
        constexpr int kOfASample = 2;
        constexpr std::size_t kOfAll = 6000;
        if (++noted <= kOfASample && misses.size() < kOfAll)
            misses += fmt::format("{}: {}: {}\n", sample.description(), what, content);
    };
    deep::recoverRows(*store, {}, [&](const deep::Facts&, const deep::RecoveredRow& row) {
        const std::string content = contentOf(row, sample.alias());
        found.insert(content);
        if (row.state != deep::RowState::Deleted) return true;
        const auto deletedRow = deletedRows.find(content);
        const bool right = deletedRow != deletedRows.end();
        const auto liveRow = liveRows.find(content);
        if (liveRow != liveRows.end() && (!right || row.rowId == liveRow->second)) ++live;
        count(shown, right);
        count(confidence.at(static_cast<std::size_t>(row.confidence)), right);
        count(space[deep::toString(row.origins.front().space)], right);
        if (!right) note("no deleted row", content);
        if (right && row.rowId) count(rowIds, deletedRow->second.contains(*row.rowId));
        if (right && row.rowId && !deletedRow->second.contains(*row.rowId))
            note("another row id", content);
        if (right && !row.rowId) ++lostRowIds;
        return true;
    });
    for (const SampleRow& row : sample.deleted()) {
        const std::string content = contentOf(row);
        // Without its row id such a row cannot be told from one that lives.
        if (liveRows.contains(content)) continue;
        const bool known = found.contains(content) || found.contains(contentOf(row, true));
        if (row.remains == CellRemains::Whole) count(whole, known);
        if (row.remains == CellRemains::Headless) count(headless, known);
        if (row.remains == CellRemains::Spilled) count(spilled, known);
        if (!known && row.remains == CellRemains::Whole) note("whole, not found", content);
        if (!known && row.remains == CellRemains::Headless) note("headless, not found", content);
    }
}

double RecoveryTally::recall() const {
    return share(whole.right + headless.right, whole.all() + headless.all());
}

double RecoveryTally::precision() const {
    return share(shown.right, shown.all());
}

}  // namespace salvor
