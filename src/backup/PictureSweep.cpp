#include "backup/PictureSweep.h"

namespace salvor {

std::string sweepPictures(ScanState& state, WorkFolder& workFolder) {
    if (auto failure = workFolder.recreate(state.BACKUP_DIRECTORY); !failure.empty()) {
        return failure;
    }
    state.Photos.clear();
    state.Videos.clear();
    state.PhotosCount = 0;
    state.VideosCount = 0;
    return {};
}

}  // namespace salvor
