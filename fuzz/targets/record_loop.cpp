// Matcher and record loop over one or two regions, with patterns of a shipped signature, held
// against the literal engine. The first byte chooses the signature, the second how to search and,
// in its upper five bits, the first of the few patterns.
#include <algorithm>

#include "carving/AbstractSqLiteRecovery.h"
#include "carving/DataPosition.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "reference/case_report.h"
#include "reference/literal_record_loop.h"

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

template <class Patterns>
Patterns few(const Patterns& all, const Choice& choice) {
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(choice.firstPattern % all.size());
    return {first, first + std::min<std::ptrdiff_t>(kMostPatterns, all.end() - first)};
}

/// Keeps every mapped column under its name.
class RegionCarver : public AbstractSqLiteRecovery {
  public:
    RegionCarver(ScanState& state, const Choice& choice)
        : AbstractSqLiteRecovery(state), deduplicate_(choice.deduplicate) {
        tablePatterns = few(
            fuzz::shippedSignatures()->tableSignatures.at(choice.signature)->TablePatterns, choice);
        _processOffset = choice.processOffset;
    }

    std::vector<CarvedRow> rows;

  protected:
    std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject() override {
        row_ = {};
        return std::make_shared<baseRecoveryObject>();
    }
    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        const auto* mapping = pattern.mappingForColumn(column);
        if (mapping == nullptr) return;
        _field = mapping->Name;
        const auto known = std::find_if(row_.columns.begin(), row_.columns.end(),
                                        [&](const auto& one) { return one.first == _field; });
        if (known == row_.columns.end())
            row_.columns.emplace_back(*_field, value);
        else
            known->second = value;
    }
    void addRecoveredObject() override {
        if (deduplicate_) rememberRowId(_recObject->RowId);
        row_.rowId = _recObject->RowId;
        row_.origin = *_recObject->Origin;
        rows.push_back(row_);
    }
    std::int32_t verifyDataPosition(Bytes text) override {
        return standardDataPosition(_field, text);
    }

  private:
    bool deduplicate_;
    CarvedRow row_;
};

std::vector<CarvedRow> expectedRows(const Choice& choice, const std::vector<Bytes>& regions) {
    reference::Events ignored;
    reference::LiteralOptions options;
    options.deduplicate = choice.deduplicate;
    const auto patterns = fuzz::literalPatterns(few(
        fuzz::shippedSignatures()->tableSignatures.at(choice.signature)->TablePatterns, choice));
    reference::LiteralRecordLoop loop(patterns, options, ignored);
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
    ScanState state;
    RegionCarver carver(state, choice);
    for (const Bytes region : regions) carver.ParseHeaderAndData(region, 0);
    return carver.rows;
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
