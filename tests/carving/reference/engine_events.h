#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// clang-format off
#define SALVOR_ENGINE_EVENTS(X) \
    X(Match) X(LaterPatternMatch) X(HeaderCutOff) X(CutOffHandedOn) X(RegionWithoutMatch) \
    X(TinyRegion) X(FailingReadInGap) X(FailingReadInFreeblock) X(FailingReadInFreeList) \
    X(FailingReadAfterRoot) X(FailingReadInWholePage) X(FailingReadOfPage) \
    X(FailingReadBeforeRegion) X(MatchBeforeRegion) X(TextBeforeData) X(RowInGap) X(RowInFreeblock) \
    X(RowInFreeList) X(RowAfterRoot) X(RowInWholePage) X(FreeblockUnshifted) X(FreeblockPastEnd) \
    X(FreeblockCut) X(FreeblockTooSmallForNext) X(FreeblockLoop) X(FreeblockAfterFreeblock) \
    X(ContentStartNotAbove) X(ContentStartPastPage) X(SkippedPageType) X(SecondPointerMapPage) \
    X(ThirdPointerMapPage) X(ShortFreeListBlock) X(SecondFreeListBlock) X(SecondAfterRootBlock) \
    X(Duplicate) X(RowIdZero) X(RowIdNegative) X(RowIdFromEarlierPattern) X(NoOpinion) X(NoDash) \
    X(CorrectionZero) X(CorrectionTooLarge) X(CorrectionApplied) X(CorrectionAppliedToCutText) \
    X(CorrectionAppliedAtLimit) X(CorrectionClearedOnReread) X(CorrectionConfirmedOnReread) \
    X(CorrectionStillWrongOnReread) X(CorrectionAskedTwice) X(CorrectionStaysForLaterRecord) \
    X(PendingFromEarlierRegion) X(PendingAfterReread) X(RepeatedState) X(SearchGoesBack) \
    X(TextCut) X(TextBeginsPastEnd) X(TextNotDecoded) X(BlobNotDecoded) X(BlobNotInside) \
    X(NumberNotInside) X(SwappedPair) X(NegativePair) X(Double) X(NameOverwritten) \
    X(FieldFromEarlierRecord) X(NothingMapped) X(PatternWithoutHeader)
// clang-format on

namespace salvor::reference {

/// What can happen while the plain engine runs. The property test asks that all of it did.
enum class Event : std::uint8_t {
#define SALVOR_EVENT(name) name,
    SALVOR_ENGINE_EVENTS(SALVOR_EVENT)
#undef SALVOR_EVENT
};

inline constexpr std::array kEventNames{
#define SALVOR_EVENT(name) #name,
    SALVOR_ENGINE_EVENTS(SALVOR_EVENT)
#undef SALVOR_EVENT
};

/// How often each event happened.
class Events {
  public:
    void count(Event event) { ++counts_.at(static_cast<std::size_t>(event)); }
    std::uint64_t operator[](std::size_t event) const { return counts_.at(event); }

  private:
    std::array<std::uint64_t, kEventNames.size()> counts_{};
};

}  // namespace salvor::reference
