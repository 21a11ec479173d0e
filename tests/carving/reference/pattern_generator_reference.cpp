#include <algorithm>
#include <array>

#include "pattern_generator.h"
#include "property_case.h"

namespace salvor::reference {
namespace {

constexpr const char* kCorrectingField = "ZStandZAid";

std::vector<int> makeColumn(RandomSource& random) {
    static const std::vector<std::vector<int>> kUsual{{-1},
                                                      {-2},
                                                      {0},
                                                      {1, 2, 3, 4, 5, 6},
                                                      {0, 8, 9, -1},
                                                      {0, -2},
                                                      {7, 0, 1, 2, 3, 4, 5, 6, 8, 9}};
    if (random.chance(70)) return random.pick(kUsual);
    if (random.chance(33)) return {-static_cast<int>(random.between(3, 60))};
    if (random.chance(50)) return {static_cast<int>(random.between(120, 150)), 131, 133, -160};
    std::vector<int> codes;
    for (auto count = random.between(1, 4); count > 0; --count)
        codes.push_back(static_cast<int>(random.between(-25, 21)));
    return codes;
}

std::int64_t columnCount(RandomSource& random) {
    const auto kind = random.below(10);
    if (kind == 0) return random.between(1, 3);
    if (kind < 3) return random.between(3, 6);
    if (kind < 5) return random.between(5, 11);
    return random.between(12, 40);
}

PlannedPattern makePattern(RandomSource& random) {
    PlannedPattern pattern;
    const auto count = columnCount(random);
    for (std::int64_t i = 0; i < count; ++i) pattern.columns.push_back(makeColumn(random));
    // Most patterns have a row id: without one, only the first record of a file is handed on.
    pattern.columns[0] = random.chance(75)
                             ? std::vector<int>{static_cast<int>(random.between(1, 3))}
                             : std::vector<int>{static_cast<int>(random.between(-2, 0))};
    // Short texts are what a correction needs.
    for (std::size_t i = 1; i < pattern.columns.size(); ++i)
        if (random.chance(15)) pattern.columns[i] = {-2};
    constexpr std::array kVersions{"iOS4", "iOS56", "iOS678", "iOS9", "iOS", "other", "ios6"};
    for (auto versions = random.below(4); versions > 0; --versions)
        pattern.versions.emplace_back(random.pick(kVersions));
    if (random.chance(10)) pattern.versions.emplace_back();
    pattern.hasHeader = !random.chance(4);
    addMappings(random, pattern);
    return pattern;
}

/// Begins as `pattern` does and goes on otherwise, as a table that grew over the years.
PlannedPattern relative(RandomSource& random, const PlannedPattern& pattern) {
    PlannedPattern changed = pattern;
    const auto count = static_cast<std::int64_t>(pattern.columns.size());
    const auto kept = random.between(std::min<std::int64_t>(count, 7), count);
    changed.columns.resize(static_cast<std::size_t>(kept));
    for (auto more = random.between(0, 6); more > 0; --more)
        changed.columns.push_back(makeColumn(random));
    changed.mappings.clear();
    addMappings(random, changed);
    return changed;
}

PlannedPattern stagedPattern(Staged staged) {
    PlannedPattern pattern;
    pattern.staged = staged;
    pattern.columns = {{1}, {0}, {0}};
    if (staged == Staged::CutBlob) {
        pattern.columns.insert(pattern.columns.end(), {{8}, {-1}, {-2}});
        pattern.mappings = {{kCorrectingField, "3"}, {"text", "4"}};
    } else {
        // So many columns that looking for it in vain does not end the region.
        pattern.columns.resize(kTextOfMoveBack, {0});
        pattern.columns.push_back({-2});
        pattern.mappings = {{kCorrectingField, std::to_string(kTextOfMoveBack)}};
    }
    return pattern;
}

/// Matches, with one column alone, wherever it is asked for.
PlannedPattern shortPattern(bool oneColumn) {
    PlannedPattern pattern;
    pattern.columns = {{1}, {0}, {0}, {8}};
    if (oneColumn) pattern.columns = {{0}};
    pattern.mappings = {{"flags", "3"}};
    return pattern;
}

std::string headerText(RandomSource& random, const PlannedPattern& pattern) {
    std::string text(static_cast<std::size_t>(random.below(3)), ' ');
    for (std::size_t i = 0; i < pattern.columns.size(); ++i) {
        if (i > 0) text += random.chance(5) ? ";\n " : ";";
        const auto& codes = pattern.columns[i];
        // A piece without a number is 0, so an empty column is one that wants NULL.
        const bool isEmpty = codes == std::vector<int>{0} && random.chance(30);
        text += '[';
        for (std::size_t c = 0; c < codes.size() && !isEmpty; ++c) {
            if (c > 0) text += random.chance(10) ? ", " : ",";
            if (codes[c] > 0 && random.chance(5)) text += '+';
            text += codes[c] == 0 && random.chance(10) ? "x" : std::to_string(codes[c]);
        }
        text += ']';
        if (random.chance(2)) text += "<!-- a column -->";
    }
    return text + std::string(static_cast<std::size_t>(random.below(3)), ' ');
}

std::string patternXml(RandomSource& random, const PlannedPattern& pattern) {
    std::string xml = "  <pattern>\n";
    for (const auto& version : pattern.versions)
        xml += version.empty() ? "   <version/>\n" : "   <version value=\"" + version + "\"/>\n";
    xml += "   <columns>a,b</columns>\n";
    if (pattern.hasHeader) xml += "   <header>" + headerText(random, pattern) + "</header>\n";
    if (random.chance(10)) xml += "   <note>of no use</note>\n";
    for (const auto& [name, column] : pattern.mappings) {
        xml += "   <attributemapping name=\"" + name + "\" column='" + column + "' />\n";
    }
    return xml + "  </pattern>\n";
}

std::string signatureXml(const std::string& domain, const std::string& patterns) {
    return " <signature name=\"" + domain + "\" database=\"" + kCaseDatabase + "\" table=\"" +
           kCaseTable + "\">\n" + patterns + " </signature>\n";
}

}  // namespace

void addMappings(RandomSource& random, PlannedPattern& pattern) {
    constexpr std::array kNames{"guid", "text", "date", "flags", "a&amp;b", kCorrectingField};
    const auto count = static_cast<std::int64_t>(pattern.columns.size());
    for (auto mappings = random.between(0, count + 1); mappings > 0; --mappings) {
        const auto column = random.chance(5) ? random.between(-2, count + 5) : random.below(count);
        pattern.mappings.emplace_back(random.pick(kNames), std::to_string(column));
    }
    if (random.chance(3)) pattern.mappings.emplace_back("text", "none");
    if (!random.chance(60)) return;
    // The correcting field stands on a text column, and often the columns after it are not mapped.
    std::vector<std::size_t> texts;
    for (std::size_t i = 1; i < pattern.columns.size(); ++i) {
        const auto& codes = pattern.columns[i];
        if (std::any_of(codes.begin(), codes.end(), [](int code) { return code < 0; }))
            texts.push_back(i);
    }
    if (texts.empty()) return;
    if (random.chance(50)) pattern.mappings.clear();
    pattern.mappings.insert(pattern.mappings.begin(),
                            {kCorrectingField, std::to_string(random.pick(texts))});
}

std::vector<PlannedPattern> makePatterns(RandomSource& random) {
    if (random.chance(4)) return {stagedPattern(Staged::CutBlob)};
    if (random.chance(4)) return {stagedPattern(Staged::MoveBack), shortPattern(random.chance(50))};
    std::vector<PlannedPattern> patterns;
    const auto count = random.chance(50) ? 1 : random.between(2, 4);
    for (std::int64_t i = 0; i < count; ++i) patterns.push_back(makePattern(random));
    if (!random.chance(30)) return patterns;
    for (auto relatives = random.chance(10) ? 40 : random.between(1, 6); relatives > 0; --relatives)
        patterns.push_back(relative(random, random.pick(patterns)));
    return patterns;
}

PlainPattern meaningOf(const PlannedPattern& pattern) {
    PlainPattern meaning;
    meaning.hasHeader = pattern.hasHeader;
    meaning.columns = pattern.columns;
    for (const auto& version : pattern.versions) {
        // "iOS56" is iOS5, iOS6 and itself.
        const bool several = version.starts_with("iOS") && version.size() > 4;
        for (std::size_t i = 3; several && i < version.size(); ++i)
            meaning.versions.push_back(std::string("iOS") + version[i]);
        meaning.versions.push_back(version);
    }
    for (const auto& [name, column] : pattern.mappings) {
        const std::int64_t number = column == "none" ? 0 : std::stoll(column);
        meaning.mappings.push_back({name == "a&amp;b" ? "a&b" : name, number});
    }
    return meaning;
}

std::string writeSignatures(RandomSource& random, const std::vector<PlannedPattern>& patterns) {
    std::string own;
    for (const auto& pattern : patterns) own += patternXml(random, pattern);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<signatures>\n";
    xml += signatureXml("OtherDomain", patternXml(random, makePattern(random)));
    xml += signatureXml(kCaseDomain, own);
    // A second signature of the same table is never found.
    xml += signatureXml(kCaseDomain, patternXml(random, makePattern(random)));
    return xml + "</signatures>\n";
}

}  // namespace salvor::reference
