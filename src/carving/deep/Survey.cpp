#include "carving/deep/Survey.h"

#include <algorithm>
#include <bit>
#include <charconv>

#include "carving/deep/SqlTokens.h"
#include "carving/deep/TextTraits.h"
#include "carving/format/BigEndian.h"

namespace salvor::deep {
namespace {

constexpr std::size_t kMaxTables = 10'000;
// Of a table's leaf pages the first are all learned from, then of each doubling as many.
constexpr std::uint32_t kLearnedPages = 64;

bool learnsFrom(std::uint32_t leaf) {
    return leaf < kLearnedPages || leaf % std::max(std::bit_floor(leaf / kLearnedPages), 1u) == 0;
}

}  // namespace

Survey::Survey(const PageStore& store, std::stop_token stop)
    : store_(store),
      stop_(std::move(stop)),
      uses_(store.pageCount()),
      chainPages_(std::uint64_t{store.pageCount()} * 4 + 1000) {
    const DatabaseLayout& layout = store.layout();
    uses_.claim(layout.lockPage(), PageUse::LockByte, kNoTable);
    for (std::uint32_t page = 2; layout.autoVacuum && page <= store.pageCount(); ++page)
        if (layout.isPointerMap(page)) uses_.claim(page, PageUse::PointerMap, kNoTable);
    readSchema();
    for (std::size_t i = 1; i < tables_.size() && !stop_.stop_requested(); ++i) {
        const auto use =
            tables_[i].definition().withoutRowId ? PageUse::IndexTree : PageUse::TableTree;
        surveyTree(tables_[i].root(), use, static_cast<std::uint16_t>(i));
    }
    for (const IndexModel& index : indexes_)
        if (!stop_.stop_requested()) surveyTree(index.root, PageUse::IndexTree, index.table);
    // Trees come first: what a damaged free list claims besides is not free for a reader either.
    surveyFreeList();
    for (auto& table : tables_) table.finishLearning();
    readSequence();
}

void Survey::readSchema() {
    tables_.emplace_back(schemaTable(), 1, store_.layout());
    surveyTree(1, PageUse::TableTree, 0);
    eachLiveCell(store_, tables_[0], [&](std::uint32_t, const BtreePage& node, const Cell& cell) {
        const Bytes whole =
            payload_.gather(node.bytes(), cell, store_.layout().usable,
                            [&](std::uint32_t page) { return store_.currentBytes(page); });
        if (record_.read(whole))
            if (auto row = SchemaRow::read(record_, store_.layout().encoding))
                schema_.push_back(*std::move(row));
        return schema_.size() < 2 * kMaxTables && !stop_.stop_requested();
    });
    for (const SchemaRow& row : schema_)
        if (row.type == "table" && row.root != 0) addTable(row);
    for (const SchemaRow& row : schema_)
        if (row.type == "index" && row.root != 0) addIndex(row);
}

void Survey::addTable(const SchemaRow& row) {
    auto definition = TableDefinition::parse(row.sql);
    if (!definition || tables_.size() >= kMaxTables) return;
    // ALTER TABLE RENAME leaves other words in the text than the row's own.
    if (!row.name.empty()) definition->name = row.name;
    tables_.emplace_back(*std::move(definition), row.root, store_.layout());
}

std::uint16_t Survey::tableNamed(const std::string& name) const {
    for (std::size_t i = 1; i < tables_.size(); ++i)
        if (equalNames(tables_[i].definition().name, name)) return static_cast<std::uint16_t>(i);
    return kNoTable;
}

void Survey::addIndex(const SchemaRow& row) {
    IndexModel index;
    index.root = row.root;
    index.table = tableNamed(row.table);
    if (index.table == kNoTable) return;
    const TableDefinition& table = tables_[index.table].definition();
    if (const auto text = IndexDefinition::parse(row.sql)) {
        index.unique = text->unique && !text->partial;
        for (const auto& name : text->columns)
            if (const auto place = table.column(name)) index.columns.push_back(*place);
        if (index.columns.size() != text->columns.size()) index.columns.clear();
    } else if (const auto last = row.name.rfind('_'); row.sql.empty() && last != row.name.npos) {
        // sqlite_autoindex_TABLE_N stands for the N-th UNIQUE or PRIMARY KEY.
        std::size_t number = 0;
        std::from_chars(row.name.data() + last + 1, row.name.data() + row.name.size(), number);
        if (number >= 1 && number <= table.uniqueKeys.size()) {
            index.columns = table.uniqueKeys[number - 1];
            index.unique = true;
        }
    }
    indexes_.push_back(std::move(index));
}

void Survey::addEarlier(const SchemaRow& row) {
    auto definition = TableDefinition::parse(row.sql);
    if (row.type != "table" || !definition || tables_.size() >= kMaxTables) return;
    if (!row.name.empty()) definition->name = row.name;
    const auto& columns = definition->columns;
    for (auto& table : tables_) {
        const auto& own = table.definition();
        if (!equalNames(own.name, definition->name)) continue;
        const bool prefix =
            columns.size() <= own.columns.size() &&
            std::equal(columns.begin(), columns.end(), own.columns.begin(),
                       [](const auto& a, const auto& b) { return equalNames(a.name, b.name); });
        if (!prefix) continue;
        table.addColumnCount(columns.size());
        return;
    }
    tables_.emplace_back(*std::move(definition), row.root, store_.layout());
    tables_.back().dropped = true;
    claimDropped(static_cast<std::uint16_t>(tables_.size() - 1));
}

void Survey::claimDropped(std::uint16_t table) {
    // Free pages keep their content: what its old root still leads to was the table's.
    walkTree(store_, tables_[table].root(), visited_, [&](std::uint32_t page, const BtreePage&) {
        const PageUse use = uses_.of(page).use;
        const bool free = use == PageUse::None || use == PageUse::FreeLeaf || use == PageUse::Trunk;
        if (free) uses_.setFormerOwner(page, table);
        return free && !stop_.stop_requested();
    });
    // The root itself may have become a trunk page.
    if (uses_.of(tables_[table].root()).use == PageUse::Trunk)
        uses_.setFormerOwner(tables_[table].root(), table);
}

void Survey::surveyTree(std::uint32_t root, PageUse use, std::uint16_t table) {
    std::uint32_t leaves = 0;
    walkTree(store_, root, visited_, [&](std::uint32_t page, const BtreePage& node) {
        if (!uses_.claim(page, use, table)) return true;
        const bool ofRows = use == PageUse::TableTree || tables_[table].definition().withoutRowId;
        const bool rows =
            ofRows && (node.isLeaf() || !node.isTable()) && root == tables_[table].root();
        surveyPage(node, rows ? table : kNoTable, rows && learnsFrom(leaves));
        if (node.isLeaf()) ++leaves;
        return !stop_.stop_requested();
    });
}

void Survey::surveyPage(const BtreePage& node, std::uint16_t table, bool learns) {
    if (node.type() == BtreePage::InteriorTable) return;
    for (std::uint32_t i = 0; i < node.cells(); ++i) {
        const auto cell = node.cellAt(node.cellPointer(i));
        if (!cell) continue;
        if (cell->overflowAt != 0) claimChain(node, *cell, table);
        if (table == kNoTable) continue;
        TableModel& model = tables_[table];
        ++model.rows;
        model.largestRowId = std::max(model.largestRowId, cell->rowId);
        if (learns) learnRow(node, *cell, table);
    }
}

void Survey::claimChain(const BtreePage& node, const Cell& cell, std::uint16_t table) {
    const std::uint32_t usable = store_.layout().usable;
    followOverflow(
        bigEndian32(node.bytes(), cell.overflowAt), cell.payload - cell.local, usable,
        [&](std::uint32_t page) -> Bytes {
            const bool fresh = uses_.claim(page, PageUse::Overflow, table);
            return fresh ? store_.currentBytes(page) : Bytes();
        },
        [&](std::uint32_t page, Bytes part) {
            if (part.size() + 4 < usable)
                uses_.setContentEnd(page, static_cast<std::uint32_t>(part.size() + 4));
        });
}

void Survey::learnRow(const BtreePage& node, const Cell& cell, std::uint16_t table) {
    const Bytes whole = payload_.gather(node.bytes(), cell, store_.layout().usable,
                                        [&](std::uint32_t page) -> Bytes {
                                            if (chainPages_ == 0) return {};
                                            --chainPages_;
                                            return store_.currentBytes(page);
                                        });
    if (payload_.complete() && record_.read(whole)) tables_[table].learn(record_, cell.rowId);
}

void Survey::surveyFreeList() {
    walkFreeList(store_, [&](std::uint32_t page, bool trunk, std::uint32_t leaves) {
        if (!uses_.claim(page, trunk ? PageUse::Trunk : PageUse::FreeLeaf, kNoTable)) return;
        if (trunk) uses_.setContentEnd(page, 8 + 4 * leaves);
    });
}

void Survey::readSequence() {
    const std::uint16_t sequence = tableNamed("sqlite_sequence");
    if (sequence == kNoTable) return;
    const auto encoding = store_.layout().encoding;
    eachLiveCell(store_, tables_[sequence],
                 [&](std::uint32_t, const BtreePage& node, const Cell& cell) {
                     if (!record_.read(slice(node.bytes(), cell.payloadAt, cell.local)) ||
                         record_.types.size() != 2)
                         return true;
                     std::uint16_t table = kNoTable;
                     record_.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
                         if (column == 0) table = tableNamed(toUtf8(value, encoding).value_or(""));
                         if (column == 1 && table != kNoTable)
                             tables_[table].handedOut = serialInteger(type, value).value_or(0);
                     });
                     return !stop_.stop_requested();
                 });
}

}  // namespace salvor::deep
