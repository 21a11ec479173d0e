#include "backup/extraction/CategoryExtraction.h"

#include <utility>

#include "backup/extraction/CategoryDatabases.h"
#include "backup/extraction/DeviceLists.h"
#include "backup/extraction/LiveCategories.h"
#include "backup/extraction/PictureSweep.h"

namespace salvor {
namespace {

void clearCounters(ScanState& state) {
    using Zeroed = RowKind::Zeroed;
    for (const CategoryFacts& category : categories()) {
        for (const RowKind& kind : category.kinds) {
            if (kind.zeroed == Zeroed::DeletedCount) state.*kind.deletedCount.field = 0;
            if (kind.zeroed == Zeroed::LiveCount) state.*kind.liveCount.field = 0;
        }
    }
    // Two scans of one backup name unknown senders alike.
    state.unKnownCount = 0;
    state.progress.bytesTotal = 0;
    state.progress.bytesDone = 0;
    state.progress.recordsFound = 0;
    state.picturesNotCopied = 0;
}

bool asksFor(std::int32_t dataType, Category category) {
    return dataType == kEverything || dataType == codeOf(category);
}

void readCategory(const CategoryFacts& category, ScanState& state,
                  const std::stop_token& cancelled) {
    state.updateStatus(StatusCode::Running, category.reading.status);
    clearLists(category, state);
    readLiveRows(category, state, cancelled);
    state.categoryRead(category.category);
    const auto shown = withList(state, factsOf(category.reading.counted).kinds.front().live,
                                [](const auto& rows) { return rows.size(); });
    state.updateStatus(StatusCode::Result,
                       std::to_string(shown) + " " + category.reading.countText);
}

}  // namespace

CategoryExtraction::CategoryExtraction(ScanState& state, WorkFolder* workFolder,
                                       std::stop_token cancelled)
    : state_(state), workFolder_(workFolder), cancelled_(std::move(cancelled)) {}

void CategoryExtraction::prepare(std::int32_t dataType) {
    clearCounters(state_);
    state_.forgetStatuses();
    state_.hasDoneScan = false;
    if (asksFor(dataType, Category::Internet)) {
        state_.InternetContent.clear();
        state_.InternetCount = 0;
    }
    clearDeviceLists(state_);
    setupDataBase(state_);
    state_.beginFiles(dataType);
}

ExtractionResult CategoryExtraction::read(std::int32_t dataType) {
    if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
    if (asksFor(dataType, Category::Photos)) {
        failure_ = sweepPictures(state_, workFolder_, cancelled_);
        if (!failure_.empty()) return ExtractionResult::NoWorkFolder;
        if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
    }
    for (const CategoryFacts* category : categoriesBy(&Places::reading)) {
        if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
        if (!asksFor(dataType, category->category)) continue;
        readCategory(*category, state_, cancelled_);
        if (dataType == kEverything) continue;
        state_.selectTab(dataType);
        state_.enableTab(category->category);
        state_.refreshTabButtons();
    }
    if (dataType == kEverything && !state_.IsCancelFlag) readDeviceLists(state_, cancelled_);
    return state_.IsCancelFlag ? ExtractionResult::Cancelled : ExtractionResult::Complete;
}

}  // namespace salvor
