#include "carving/deep/SearchPlan.h"

#include <algorithm>

namespace salvor::deep {
namespace {

// A text or blob of 58 bytes needs a type of two bytes, one of 8186 a type of three.
constexpr std::size_t kMoreForText = 2;

constexpr ClassSet kTexts = ClassSet{1} << kText | ClassSet{1} << kBlob;

/// Whether a type that begins with `byte` can be one of `classes`.
bool beginsClass(ClassSet classes, unsigned byte) {
    if (byte >= 0x80) return (classes & kTexts) != 0;
    return (unsigned{classes} >> serialClass(byte) & 1u) != 0;
}

}  // namespace

SearchPlan::SearchPlan(const std::vector<TableModel>& tables) {
    std::size_t most = 0;
    for (const auto& table : tables) most = std::max(most, table.columns().size());
    byCount_.resize(most + 1);
    for (std::size_t i = 0; i < tables.size(); ++i)
        for (std::size_t count = 1; count <= tables[i].columns().size(); ++count)
            if (tables[i].admitsCount(count)) {
                byCount_[count].push_back(static_cast<std::uint16_t>(i));
                add(tables[i], count);
            }
}

void SearchPlan::add(const TableModel& table, std::size_t count) {
    std::size_t more = 0;
    for (std::size_t i = 0; i < count; ++i)
        if ((table.columns()[i].admissible() & kTexts) != 0) more += kMoreForText;
    for (std::size_t length = count + 1; length <= count + 1 + more; ++length) {
        if (length >= 128) {
            // The length itself takes a second byte.
            if (longHeaders_.size() <= length + 1) longHeaders_.resize(length + 2);
            longHeaders_[length] = longHeaders_[length + 1] = true;
            continue;
        }
        for (unsigned byte = 0; byte < 256; ++byte) {
            const std::size_t place = length << 8 | byte;
            if (beginsClass(table.columns()[0].admissible(), byte)) firsts_[place] = true;
            if (count == 1 || beginsClass(table.columns()[1].admissible(), byte))
                seconds_[place] = true;
        }
    }
}

}  // namespace salvor::deep
