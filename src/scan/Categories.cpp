#include "scan/Categories.h"

#include <algorithm>

namespace salvor {

const CategoryFacts& factsOf(Category category) {
    return categories()[indexOf(category)];
}

std::vector<const CategoryFacts*> categoriesBy(int Places::*place) {
    std::vector<const CategoryFacts*> ordered;
    for (const CategoryFacts& facts : categories()) {
        if (facts.places.*place != 0) ordered.push_back(&facts);
    }
    std::sort(ordered.begin(), ordered.end(), [place](const auto* left, const auto* right) {
        return left->places.*place < right->places.*place;
    });
    return ordered;
}

std::optional<Category> categoryOf(std::int32_t code) {
    if (code < 1 || code > codeOf(kLastCategory)) return std::nullopt;
    return static_cast<Category>(code);
}

std::optional<std::int32_t> categoryCode(std::string_view wordOrCode) {
    if (wordOrCode == "all" || wordOrCode == std::to_string(kEverything)) return kEverything;
    for (const CategoryFacts& facts : categories()) {
        const std::int32_t code = codeOf(facts.category);
        if (wordOrCode == facts.word ||
            (code <= kLastTypedCode && wordOrCode == std::to_string(code)))
            return code;
    }
    return std::nullopt;
}

const std::string& categoryWords() {
    static const std::string words = [] {
        std::string list = "all (default), ";
        for (const CategoryFacts& facts : categories()) list.append(facts.word).append(", ");
        return list + "or a code 0 to " + std::to_string(kLastTypedCode);
    }();
    return words;
}

std::vector<CategoryCounts> countRecords(const ScanState& state, std::int32_t code) {
    const auto size = [](const auto& rows) { return rows.size(); };
    std::vector<CategoryCounts> counts;
    for (const CategoryFacts& facts : categories()) {
        if (code != kEverything && code != codeOf(facts.category)) continue;
        CategoryCounts& own = counts.emplace_back(CategoryCounts{facts});
        for (const RowKind& kind : facts.kinds) {
            if (!kind.listed) continue;
            own.live += withList(state, kind.live, size);
            own.deleted += withList(state, kind.deleted, size);
        }
    }
    return counts;
}

void clearLists(const CategoryFacts& facts, ScanState& state) {
    const auto clear = [](auto& rows) { rows.clear(); };
    for (const RowKind& kind : facts.kinds) {
        withList(state, kind.live, clear);
        withList(state, kind.deleted, clear);
    }
    facts.clearFurther(state);
}

}  // namespace salvor
