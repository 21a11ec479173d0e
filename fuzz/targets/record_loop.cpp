// Matcher and record loop over one or two regions, with patterns of a shipped signature, held
// against the reference engine. The first byte chooses the signature, the second how to search and,
// in its upper five bits, the first of the few patterns.
#include <algorithm>

#include "carving/RecordLoop.h"
#include "carving/RowCollector.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "reference/case_report.h"
#include "reference/plain_record_loop.h"

using namespace salvor;

namespace {

/// Both engines spend most of their time on preparing patterns.
constexpr std::size_t kMostPatterns = 4;

struct Choice {
    std::size_t signature;
    std::size_t firstPattern;
    std::int32_t processOffset;
    bool twoRegions;
    bool deduplicate;
};

TablePatterns patternsOf(const Choice& choice) {
    const auto& signatures = fuzz::shippedSignatures()->tableSignatures;
    const auto& all = signatures.at(choice.signature)->TablePatterns;
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(choice.firstPattern % all.size());
    return {first, first + std::min<std::ptrdiff_t>(kMostPatterns, all.end() - first)};
}

std::vector<CarvedRow> expectedRows(const Choice& choice, const std::vector<Bytes>& regions) {
    reference::PlainOptions options;
    options.deduplicate = choice.deduplicate;
    const auto patterns = fuzz::referencePatterns(patternsOf(choice));
    reference::PlainRecordLoop loop(patterns, options);
    loop.processOffset = choice.processOffset;
    for (const Bytes region : regions) {
        const reference::Buffer data(region.begin(), region.end());
        try {
            loop.parse({data, 0, 0, CarvedSpace::Gap}, 0);
        } catch (const reference::RangeFailure&) {
            // Ends this region alone.
        }
    }
    return loop.rows;
}

std::vector<CarvedRow> actualRows(const Choice& choice, const std::vector<Bytes>& regions) {
    std::vector<CarvedRow> rows;
    using enum RowCollector::RowIds;
    RowCollector collector([&](const CarvedRow& row) { rows.push_back(row); },
                           choice.deduplicate ? FirstOnly : Every);
    RecordLoop loop(collector, {});
    loop.use(patternsOf(choice));
    for (const Bytes region : regions)
        loop.ParseHeaderAndData({region, 0, 0, CarvedSpace::Gap, 0, choice.processOffset});
    return rows;
}

}  // namespace

SALVOR_FUZZ_TARGET(record_loop) {
    if (input.size() < 2) return;
    const Choice choice{input[0] % fuzz::shippedSignatures()->tableSignatures.size(),
                        std::size_t{input[1]} >> 3U, input[1] & 1, (input[1] & 2) != 0,
                        (input[1] & 4) == 0};
    const Bytes bytes = input.subspan(2);
    std::vector<Bytes> regions{bytes};
    if (choice.twoRegions)
        regions = {bytes.first(bytes.size() / 2), bytes.subspan(bytes.size() / 2)};
    const auto wrong =
        reference::difference(expectedRows(choice, regions), actualRows(choice, regions));
    fuzz::expect(wrong.empty(), wrong);
}
