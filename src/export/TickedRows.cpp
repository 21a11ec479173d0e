#include "export/TickedRows.h"

#include <type_traits>

#include "scan/Categories.h"

namespace salvor {

void tickRows(ScanState& state, const TickedSerials& ticked) {
    static const std::set<std::size_t> kNone;
    for (const CategoryFacts& category : categories()) {
        const auto found = ticked.find(codeOf(category.category));
        const auto& serials = found == ticked.end() ? kNone : found->second;
        std::size_t serial = 0;
        const auto tick = [&](const auto& rows) {
            for (const auto& row : rows) {
                ++serial;
                using Tick = std::remove_cvref_t<decltype(row->isChecked)>;
                row->isChecked = static_cast<Tick>(serials.count(serial));
            }
        };
        for (const RowKind& kind : category.kinds) {
            if (!kind.listed) continue;
            withList(state, kind.live, tick);
            withList(state, kind.deleted, tick);
        }
    }
}

}  // namespace salvor
