#include "carving/format/TreeWalk.h"

#include <algorithm>

#include "carving/format/BigEndian.h"

namespace salvor {
namespace {

// A tree of SQLite is never deeper; one that is goes round.
constexpr int kDeepest = 40;

std::optional<BtreePage> nodeAt(const PageStore& store, std::uint32_t page) {
    return BtreePage::read(store.currentBytes(page), page, store.layout().usable);
}

}  // namespace

void walkTree(const PageStore& store, std::uint32_t root, PageSet& visited,
              const std::function<bool(std::uint32_t page, const BtreePage& node)>& visit) {
    visited.resize(std::max(visited.size(), std::size_t{store.pageCount()} + 1));
    std::vector<std::uint32_t> waiting{root};
    bool table = false;
    while (!waiting.empty()) {
        const std::uint32_t page = waiting.back();
        waiting.pop_back();
        if (page == 0 || page > store.pageCount() || visited[page]) continue;
        const auto node = nodeAt(store, page);
        if (!node) continue;
        if (page == root) table = node->isTable();
        if (node->isTable() != table) continue;
        visited[page] = true;
        if (!visit(page, *node)) return;
        if (node->isLeaf()) continue;
        waiting.push_back(node->rightChild());
        for (std::uint32_t i = node->cells(); i-- > 0;)
            waiting.push_back(bigEndian32(node->bytes(), node->cellPointer(i)));
    }
}

FoundCell findRow(const PageStore& store, std::uint32_t root, std::int64_t rowId) {
    std::uint32_t page = root;
    for (int depth = 0; depth < kDeepest; ++depth) {
        const auto node = nodeAt(store, page);
        if (!node || !node->isTable()) break;
        std::uint32_t low = 0;
        std::uint32_t high = node->cells();
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            const auto cell = node->cellAt(node->cellPointer(middle));
            if (cell && cell->rowId < rowId) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        const auto cell = low < node->cells() ? node->cellAt(node->cellPointer(low)) : std::nullopt;
        if (node->isLeaf()) {
            if (cell && cell->rowId == rowId) return {page, *cell};
            break;
        }
        page = cell ? cell->leftChild : node->rightChild();
    }
    return {};
}

void walkFreeList(
    const PageStore& store,
    const std::function<void(std::uint32_t page, bool trunk, std::uint32_t leaves)>& visit) {
    PageSet visited(std::size_t{store.pageCount()} + 1);
    std::uint32_t trunk = store.layout().firstTrunk;
    while (trunk != 0 && trunk <= store.pageCount() && !visited[trunk]) {
        visited[trunk] = true;
        const Bytes page = store.currentBytes(trunk);
        const std::uint32_t room = store.layout().usable / 4 - 2;
        const std::uint32_t leaves = std::min(bigEndian32(page, 4), room);
        visit(trunk, true, leaves);
        for (std::uint32_t i = 0; i < leaves; ++i) {
            const std::uint32_t leaf = bigEndian32(page, 8 + std::size_t{i} * 4);
            if (leaf == 0 || leaf > store.pageCount() || visited[leaf]) continue;
            visited[leaf] = true;
            visit(leaf, false, 0);
        }
        trunk = bigEndian32(page, 0);
    }
}

}  // namespace salvor
