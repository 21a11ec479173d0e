#include "backup/extraction/CategoryExtraction.h"

#include <utility>

#include "backup/extraction/CategoryDatabases.h"
#include "backup/extraction/DeviceLists.h"
#include "backup/extraction/LiveCategories.h"
#include "backup/extraction/PictureSweep.h"

namespace salvor {
namespace {

void clearCounters(ScanState& state) {
    for (auto* counter :
         {&state.DeletedSMSCount, &state.DeletedContactCount, &state.DeletedCallLogCount,
          &state.DeletedNoteCount, &state.DeletedCalendarCount, &state.DeletedWhatsAppCount,
          &state.DeletediMessageCount, &state.DeletedFaceTimeCount, &state.PhotosCount,
          &state.VideosCount}) {
        *counter = 0;
    }
    // Two scans of one backup name unknown senders alike.
    state.unKnownCount = 0;
    state.progress.bytesTotal = 0;
    state.progress.bytesDone = 0;
    state.progress.recordsFound = 0;
}

void readCategory(const LiveCategory& category, ScanState& state,
                  const std::stop_token& cancelled) {
    state.updateStatus(0, category.name);
    category.clear(state);
    category.read(state, cancelled);
    state.updateStatus(3, std::to_string(category.shownCount(state)) + " " + category.countText);
}

}  // namespace

CategoryExtraction::CategoryExtraction(ScanState& state, WorkFolder& workFolder,
                                       std::stop_token cancelled)
    : state_(state), workFolder_(workFolder), cancelled_(std::move(cancelled)) {}

void CategoryExtraction::prepare(std::int32_t dataType) {
    clearCounters(state_);
    state_.hasDoneScan = false;
    if (dataType == kEverything || dataType == kInternetHistory) {
        state_.InternetContent.clear();
        state_.InternetCount = 0;
    }
    clearDeviceLists(state_);
    setupDataBase(state_);
}

ExtractionResult CategoryExtraction::read(std::int32_t dataType) {
    if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
    if (dataType == kEverything || dataType == kPhotosAndVideos) {
        failure_ = sweepPictures(state_, workFolder_, cancelled_);
        if (!failure_.empty()) return ExtractionResult::NoWorkFolder;
        if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
    }
    for (const LiveCategory& category : liveCategories()) {
        if (state_.IsCancelFlag) return ExtractionResult::Cancelled;
        if (dataType != kEverything && dataType != category.code) continue;
        readCategory(category, state_, cancelled_);
        if (dataType == category.code) state_.refreshTabButtons();
    }
    if (dataType == kEverything && !state_.IsCancelFlag) readDeviceLists(state_, cancelled_);
    return state_.IsCancelFlag ? ExtractionResult::Cancelled : ExtractionResult::Complete;
}

}  // namespace salvor
