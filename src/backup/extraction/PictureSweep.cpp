#include "backup/extraction/PictureSweep.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <memory>
#include <string_view>

#include "scan/Categories.h"
#include "scan/ListLock.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

/// Bytes that a kind has at a place; the first that fits decides.
struct Mark {
    PictureKind kind;
    std::size_t offset;
    std::string_view bytes;
};

constexpr std::array kMarks{
    Mark{PictureKind::Jpeg, 6, "JFIF\0"sv},     Mark{PictureKind::ExifJpeg, 6, "Exif\0\0"sv},
    Mark{PictureKind::Png, 1, "PNG"sv},         Mark{PictureKind::QuickTime, 4, "ftypqt"sv},
    Mark{PictureKind::Database, 0, "SQLite"sv},
};

constexpr std::size_t kProgressSteps = 8;

/// One walk over the stored files of a backup.
class Sweep {
  public:
    Sweep(ScanState& state, const WorkFolder& workFolder, const std::stop_token& cancelled)
        : state_(state), workFolder_(workFolder), cancelled_(cancelled) {}

    void run() {
        state_.updateStatus(StatusCode::Running, factsOf(Category::Photos).reading.status);
        const auto files = state_.backupFiles()->list();
        const std::size_t step = files->size() / kProgressSteps;
        state_.progress.pictureSteps = 0;
        for (std::size_t visited = 1; visited <= files->size(); ++visited) {
            if (isCancelled()) break;
            visit(*files, visited - 1);
            if (isCancelled()) break;
            if (step > 0 && visited % step == 0) advance();
        }
        if (failed_ > 0)
            state_.warn(fmt::format("{} pictures and videos could not be copied: {}", failed_,
                                    firstFailure_));
    }

  private:
    bool isCancelled() const { return state_.IsCancelFlag || cancelled_.stop_requested(); }

    void advance() {
        if (state_.progress.pictureSteps < kProgressSteps) ++state_.progress.pictureSteps;
    }

    void visit(const StoredFileList& files, std::size_t index) {
        std::array<std::uint8_t, kPictureHead> head{};
        const std::size_t size = files.readHead(index, head);
        switch (pictureKind(std::span(head).first(size))) {
            case PictureKind::Png:
                return addPhoto(files, index, "PNG");
            case PictureKind::Jpeg:
                return addPhoto(files, index, "JPG");
            case PictureKind::QuickTime:
                return addVideo(files, index);
            // Kept: exif-pictures-left-out.
            case PictureKind::ExifJpeg:
            case PictureKind::Database:
            case PictureKind::Other:
                return;
        }
    }

    bool copy(const StoredFileList& files, std::size_t index, const fs::path& target) {
        const std::string failure = files.copyTo(index, target, [this] { return isCancelled(); });
        if (failure.empty()) return true;
        if (!isCancelled() && failed_++ == 0)
            firstFailure_ = files.place(index).string() + " to " + target.string() + ": " + failure;
        return false;
    }

    void addPhoto(const StoredFileList& files, std::size_t index, const char* extension) {
        const fs::path target =
            workFolder_.photos() / fmt::format("IMG_{}.{}", state_.PhotosCount.load(), extension);
        if (!copy(files, index, target)) return;
        ++state_.PhotosCount;
        auto photo = std::make_shared<Photo>();
        photo->Name = target.filename().string();
        photo->Location = target.string();
        const ListLock lock(state_.photosLocked);
        state_.Photos.push_back(std::move(photo));
    }

    void addVideo(const StoredFileList& files, std::size_t index) {
        const fs::path target =
            workFolder_.videos() / fmt::format("MOV_{}.MOV", state_.VideosCount.load());
        if (!copy(files, index, target)) return;
        ++state_.VideosCount;
        auto video = std::make_shared<Video>();
        video->Name = target.filename().string();
        video->Location = target.string();
        video->Image = "video-thumbnail";
        const ListLock lock(state_.dcimLocked);
        state_.Videos.push_back(std::move(video));
    }

    ScanState& state_;
    const WorkFolder& workFolder_;
    const std::stop_token& cancelled_;
    std::size_t failed_ = 0;
    std::string firstFailure_;
};

}  // namespace

PictureKind pictureKind(std::span<const std::uint8_t> head) {
    for (const Mark& mark : kMarks) {
        if (head.size() < mark.offset + mark.bytes.size()) continue;
        const auto place = head.subspan(mark.offset, mark.bytes.size());
        const auto same = [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); };
        if (std::equal(place.begin(), place.end(), mark.bytes.begin(), same)) return mark.kind;
    }
    return PictureKind::Other;
}

std::string sweepPictures(ScanState& state, WorkFolder& workFolder,
                          const std::stop_token& cancelled) {
    if (auto failure = workFolder.recreate(state.BACKUP_DIRECTORY); !failure.empty()) {
        return failure;
    }
    clearLists(factsOf(Category::Photos), state);
    state.forgetOtherBackups();
    state.DeletedPhotosCount = 0;
    state.DeletedVideosCount = 0;
    // Names are numbered from 1; the counters are the number of copies once the view is drawn.
    state.PhotosCount = 1;
    state.VideosCount = 1;
    Sweep(state, workFolder, cancelled).run();
    state.UpdateMainView(View::Lists);  // Kept: counters-after-view.
    --state.PhotosCount;
    --state.VideosCount;
    return {};
}

}  // namespace salvor
