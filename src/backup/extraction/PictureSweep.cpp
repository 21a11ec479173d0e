#include "backup/extraction/PictureSweep.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "scan/Categories.h"
#include "scan/ListLock.h"
#include "scan/StoredNames.h"
#include "util/FileUtils.h"

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

/// A file that cannot be read is one of these unless its name says what else it is.
bool mayBePicture(const fs::path& file) {
    const std::string name = file.filename().string();
    if (name.size() != 40) return false;
    return std::none_of(std::begin(kStoredFiles), std::end(kStoredFiles),
                        [&name](const StoredFile& known) { return name == known.name; });
}

/// How often something happened, and what the first time.
class Faults {
  public:
    void note(const std::string& text) {
        if (count_++ == 0) first_ = text;
    }
    std::size_t count() const { return count_; }
    std::string text() const { return fmt::format("{}, the first is {}", count_, first_); }

  private:
    std::size_t count_ = 0;
    std::string first_;
};

/// One walk over the stored files of a backup. Without a work folder nothing is copied.
class Sweep {
  public:
    Sweep(ScanState& state, const WorkFolder* workFolder, const std::stop_token& cancelled)
        : state_(state),
          workFolder_(workFolder),
          cancelled_(cancelled),
          files_(state.backupFiles()->list()) {}

    /// "" or why the copies have no room.
    std::string lackOfRoom() {
        if (workFolder_ == nullptr) return "";
        std::uint64_t needed = 0;
        std::optional<std::size_t> first;
        for (std::size_t index = 0; index < files_->size() && !isCancelled(); ++index) {
            kinds_.push_back(look(index));
            if (!isListed(kinds_.back())) continue;
            needed += files_->fileSize(index);
            if (!first) first = index;
        }
        const auto lack = FileUtils::lackOfSpace(workFolder_->path(), needed);
        if (lack.empty() || (first && files_->sharesBlocks(*first, workFolder_->path()))) return "";
        return workFolder_->path().string() + ": copying the pictures and videos " + lack;
    }

    void run() {
        const std::size_t step = files_->size() / kProgressSteps;
        state_.progress.pictureSteps = 0;
        for (std::size_t visited = 1; visited <= files_->size(); ++visited) {
            if (isCancelled()) break;
            visit(visited - 1);
            if (isCancelled()) break;
            if (step > 0 && visited % step == 0) advance();
        }
        tellFaults();
    }

  private:
    bool isCancelled() const { return state_.IsCancelFlag || cancelled_.stop_requested(); }

    void advance() {
        if (state_.progress.pictureSteps < kProgressSteps) ++state_.progress.pictureSteps;
    }

    // Kept: exif-pictures-left-out.
    static bool isListed(PictureKind kind) {
        return kind == PictureKind::Png || kind == PictureKind::Jpeg ||
               kind == PictureKind::QuickTime;
    }

    PictureKind look(std::size_t index) {
        std::array<std::uint8_t, kPictureHead> bytes{};
        const auto head = files_->readHead(index, bytes);
        if (!head.fault.empty() && mayBePicture(files_->place(index)))
            unread_.note(files_->place(index).string() + ": " + head.fault);
        return pictureKind(std::span(bytes).first(head.size));
    }

    void visit(std::size_t index) {
        const auto kind = index < kinds_.size() ? kinds_[index] : look(index);
        if (!isListed(kind)) return;
        if (kind == PictureKind::QuickTime) return addVideo(index);
        addPhoto(index, kind == PictureKind::Png ? "PNG" : "JPG");
    }

    /// Where the file can be had from now on: its copy, or its place. Nothing when the copy failed.
    std::optional<fs::path> provide(std::size_t index, const fs::path& folder,
                                    const std::string& name) {
        const auto place = files_->place(index);
        if (workFolder_ == nullptr) return place;
        const auto copy =
            files_->copyTo(index, folder / name,
                           {state_.backupFiles()->indexedDate(place.filename().string()),
                            [this] { return isCancelled(); }});
        if (copy) return folder / name;
        if (copy.end == FileCopy::End::Unreadable) unread_.note(place.string() + ": " + copy.cause);
        if (copy.end == FileCopy::End::Unwritten)
            unwritten_.note(
                fmt::format("{} to {}: {}", place.string(), (folder / name).string(), copy.cause));
        return std::nullopt;
    }

    template <class Medium>
    static std::shared_ptr<Medium> listed(const std::string& name, const fs::path& location) {
        auto medium = std::make_shared<Medium>();
        medium->Name = name;
        medium->Location = location.string();
        return medium;
    }

    void addPhoto(std::size_t index, const char* extension) {
        const auto name = fmt::format("IMG_{}.{}", state_.PhotosCount.load(), extension);
        const auto location = provide(index, photos_, name);
        if (!location) return;
        ++state_.PhotosCount;
        auto photo = listed<Photo>(name, *location);
        const ListLock lock(state_.photosLocked);
        state_.Photos.push_back(std::move(photo));
    }

    void addVideo(std::size_t index) {
        const auto name = fmt::format("MOV_{}.MOV", state_.VideosCount.load());
        const auto location = provide(index, videos_, name);
        if (!location) return;
        ++state_.VideosCount;
        auto video = listed<Video>(name, *location);
        video->Image = "video-thumbnail";
        const ListLock lock(state_.dcimLocked);
        state_.Videos.push_back(std::move(video));
    }

    void tellFaults() {
        if (unread_.count() > 0)
            state_.categoryFailed(Category::Photos,
                                  "files that cannot be read and may be among "
                                  "them: " +
                                      unread_.text());
        state_.picturesNotCopied = unwritten_.count();
        if (unwritten_.count() > 0)
            state_.tellError("pictures and videos that could not be copied: " + unwritten_.text());
    }

    ScanState& state_;
    const WorkFolder* workFolder_;
    const std::stop_token& cancelled_;
    const std::unique_ptr<StoredFileList> files_;
    const fs::path photos_ = workFolder_ == nullptr ? fs::path() : workFolder_->photos();
    const fs::path videos_ = workFolder_ == nullptr ? fs::path() : workFolder_->videos();
    Faults unread_, unwritten_;
    std::vector<PictureKind> kinds_;  ///< of the files looked at before the walk
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

std::string sweepPictures(ScanState& state, WorkFolder* workFolder,
                          const std::stop_token& cancelled) {
    if (workFolder != nullptr) {
        if (auto failure = workFolder->recreate(state.BACKUP_DIRECTORY); !failure.empty())
            return failure;
    }
    state.updateStatus(StatusCode::Running, factsOf(Category::Photos).reading.status);
    Sweep sweep(state, workFolder, cancelled);
    if (auto lack = sweep.lackOfRoom(); !lack.empty()) return lack;
    clearLists(factsOf(Category::Photos), state);
    state.forgetOtherBackups();
    state.DeletedPhotosCount = 0;
    state.DeletedVideosCount = 0;
    // Names are numbered from 1; the counters are the number of copies once the view is drawn.
    state.PhotosCount = 1;
    state.VideosCount = 1;
    sweep.run();
    state.UpdateMainView(View::Lists);  // Kept: counters-after-view.
    --state.PhotosCount;
    --state.VideosCount;
    return {};
}

}  // namespace salvor
