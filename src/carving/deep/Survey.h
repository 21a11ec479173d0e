#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <vector>

#include "carving/deep/PageUses.h"
#include "carving/deep/SchemaRows.h"
#include "carving/deep/TableModel.h"
#include "carving/format/PageStore.h"
#include "carving/format/Payload.h"
#include "carving/format/TreeWalk.h"

namespace salvor::deep {

/// An index of a table by the places of its columns in the record.
struct IndexModel {
    std::uint16_t table = kNoTable;
    std::uint32_t root = 0;
    std::vector<std::size_t> columns;
    bool unique = false;
};

/// Goes once through everything that a reader of the database sees: which page serves what, which
/// tables there are, and what their rows look like. Table 0 is the schema table.
class Survey {
  public:
    Survey(const PageStore& store, std::stop_token stop);

    const PageStore& store() const { return store_; }
    const std::vector<TableModel>& tables() const { return tables_; }
    std::vector<TableModel>& tables() { return tables_; }
    const std::vector<IndexModel>& indexes() const { return indexes_; }
    const PageUses& uses() const { return uses_; }
    /// Adds a table that a deleted schema row names, or what it tells about one that lives.
    void addEarlier(const SchemaRow& row);

  private:
    void readSchema();
    void addTable(const SchemaRow& row);
    void addIndex(const SchemaRow& row);
    std::uint16_t tableNamed(const std::string& name) const;
    void surveyTree(std::uint32_t root, PageUse use, std::uint16_t table);
    void surveyPage(const BtreePage& node, std::uint16_t table, bool learns);
    void claimChain(const BtreePage& node, const Cell& cell, std::uint16_t table);
    void learnRow(const BtreePage& node, const Cell& cell, std::uint16_t table);
    void surveyFreeList();
    void readSequence();
    void claimDropped(std::uint16_t table);

    const PageStore& store_;
    std::stop_token stop_;
    std::vector<TableModel> tables_;
    std::vector<IndexModel> indexes_;
    std::vector<SchemaRow> schema_;
    PageUses uses_;
    PageSet visited_;
    std::uint64_t chainPages_;  ///< overflow pages that may still be read
    Payload payload_;
    Record record_;
};

/// Calls `show(page, node, cell)` for every row of the table below `root` that a reader sees; ends
/// when it returns false.
template <class Show>
void eachLiveCell(const PageStore& store, const TableModel& table, Show&& show) {
    PageSet visited;
    walkTree(store, table.root(), visited, [&](std::uint32_t page, const BtreePage& node) {
        if (node.isTable() && !node.isLeaf()) return true;
        for (std::uint32_t i = 0; i < node.cells(); ++i)
            if (const auto cell = node.cellAt(node.cellPointer(i)))
                if (!show(page, node, *cell)) return false;
        return true;
    });
}

}  // namespace salvor::deep
