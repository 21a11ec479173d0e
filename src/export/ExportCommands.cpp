#include "export/ExportCommands.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "export/CsvColumns.h"
#include "export/CsvWriter.h"
#include "export/ExportFolder.h"
#include "scan/Categories.h"
#include "util/FileUtils.h"
#include "util/ReadableFile.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t maxNameBytes = 200;  // leaves room for what follows a device's name

/// One file or folder of an export.
struct Step {
    int place;  ///< in the order of an export, as `RowKind::exported`
    std::string word;
    Exporter::Result (Exporter::*operation)(const ScanState&, const fs::path&, bool,
                                            const ExportWatch&) const;
    const RowKind* rows = nullptr;  ///< of a category, which needs no operation
};

/// What belongs to no category and is left out where only ticked rows are exported.
constexpr int kDeviceInfo = 12;
const Step kDeviceSteps[] = {
    {6, "Apps", &Exporter::ExportApplicationData},
    {7, "User dictionary", &Exporter::KeyboardDictionary},
    {10, "Map", &Exporter::ExportMapHistory},
    {kDeviceInfo, "_info.csv", nullptr},
};

std::vector<Step> stepsInOrder(bool onlyTicked) {
    std::vector<Step> steps;
    if (!onlyTicked) steps.assign(std::begin(kDeviceSteps), std::end(kDeviceSteps));
    for (const CategoryFacts& category : categories()) {
        for (const RowKind& kind : category.kinds) {
            if (kind.listed) steps.push_back({kind.exported, kind.file, nullptr, &kind});
        }
    }
    std::sort(steps.begin(), steps.end(),
              [](const Step& left, const Step& right) { return left.place < right.place; });
    return steps;
}

/// The names given away in one folder; a name that is taken gets " (2)", " (3)" and so on.
class MediaNames {
  public:
    std::string take(const std::string& name) {
        if (taken_.insert(name).second) return name;
        const fs::path parts = name;
        std::string free;
        for (int& number = next_.try_emplace(name, 2).first->second;; ++number) {
            free =
                fmt::format("{} ({}){}", parts.stem().string(), number, parts.extension().string());
            if (taken_.insert(free).second) return free;
        }
    }

  private:
    std::unordered_set<std::string> taken_;
    std::unordered_map<std::string, int> next_;  ///< where the search for a free number goes on
};

class ExportRun {
  public:
    ExportRun(const ScanState& state, bool onlyTicked, const ExportWatch& watch)
        : state_(state), onlyTicked_(onlyTicked), watch_(watch) {}

    ExportSummary run(const fs::path& target, const std::string& suffix, Date now) {
        const std::string name = deviceName() + " - " + DateUtils::format(now, DatePattern::Folder);
        if (const int failure = folder_.make(target, name); failure != 0) {
            summary_.failed.push_back({folder_.path(), 0, messageOf(failure)});
            return std::move(summary_);
        }
        summary_.folder = folder_.path();
        const Exporter& exporter = Exporter::defaultExporter(summary_.folder);
        const auto steps = stepsInOrder(onlyTicked_);
        requireRoomForMedia(steps);
        if (watch_.progress) {
            for (const Step& step : steps) count(exporter, step);
        }
        for (const Step& step : steps) {
            if (!goesOn()) break;
            if (step.rows != nullptr) {
                exportRows(exporter, *step.rows, suffix);
            } else if (step.place == kDeviceInfo) {
                writeDeviceInfo(inFolder(deviceName() + step.word));
            } else {
                note((exporter.*step.operation)(state_, inFolder(step.word + suffix), onlyTicked_,
                                                watchRows()));
            }
        }
        finish();
        return std::move(summary_);
    }

  private:
    /// Calls `use` with every picture and video to be copied.
    template <class Use>
    void forEachMedium(const Step& step, Use use) const {
        if (step.rows == nullptr || (onlyTicked_ && !step.rows->tickedExported)) return;
        for (const NamedList* list : {&step.rows->live, &step.rows->deleted}) {
            withList(state_, *list, [&]<class Row>(const List<Row>& rows) {
                if constexpr (columns::Medium<Row>) {
                    for (const auto& item : rows)
                        if (wanted(*item)) use(*item);
                }
            });
        }
    }

    void requireRoomForMedia(const std::vector<Step>& steps) {
        std::uint64_t bytes = 0;
        fs::path first;
        for (const Step& step : steps) {
            forEachMedium(step, [&](const auto& medium) {
                const fs::path source = medium.Location.value_or("");
                const auto facts = state_.findListed(source);
                if (!facts) return;
                bytes += facts.size;
                if (first.empty()) first = source;
            });
        }
        const auto lack = FileUtils::lackOfSpace(summary_.folder, bytes);
        if (lack.empty()) return;
        const auto file = state_.openListed(first);
        const auto readable = ReadableFile::open(file.path);
        if (readable && readable->sharesBlocksWith(summary_.folder)) return;
        copiesMedia_ = false;
        summary_.failed.push_back(
            {summary_.folder, 0, "no picture or video is copied: copying them " + lack});
    }

    /// The folder gets its name when everything that was to be written is in it.
    void finish() {
        summary_.whole = !summary_.cancelled && summary_.failed.empty();
        if (!summary_.whole) return;
        const auto before = folder_.path();
        if (const int failure = folder_.finish(); failure != 0) {
            summary_.whole = false;
            summary_.failed.push_back({before, 0, "cannot be renamed: " + messageOf(failure)});
            return;
        }
        summary_.folder = folder_.path();
        Exporter::defaultExporter(summary_.folder);
        for (auto* files : {&summary_.written, &summary_.unreadable})
            for (ExportedFile& file : *files)
                file.path = summary_.folder / file.path.lexically_relative(before);
    }

    static std::string messageOf(int error) { return std::generic_category().message(error); }

    /// Adds what a step will write to the totals of the progress.
    void count(const Exporter& exporter, const Step& step) {
        const ExportWatch counting{{}, {}, &progress_.rowsTotal};
        if (step.operation != nullptr)
            (exporter.*step.operation)(state_, {}, onlyTicked_, counting);
        if (step.rows == nullptr || (onlyTicked_ && !step.rows->tickedExported)) return;
        exporter.exportRows(*step.rows, state_, {}, onlyTicked_, counting);
        if (copiesMedia_) forEachMedium(step, [this](const auto&) { ++progress_.filesTotal; });
    }

    bool goesOn() {
        if (watch_.cancelled.stop_requested()) summary_.cancelled = true;
        return !summary_.cancelled;
    }

    template <class Row>
    bool wanted(const Row& row) const {
        return !onlyTicked_ || row.isChecked == 1;
    }

    /// The watch of one file of rows, whose progress goes on from what is done.
    ExportWatch watchRows() const {
        if (!watch_.progress) return {watch_.cancelled, {}, nullptr};
        return {watch_.cancelled,
                [this, before = progress_](const ExportProgress& file) {
                    auto now = before;
                    now.rowsDone += file.rowsDone;
                    watch_.progress(now);
                },
                nullptr};
    }

    void exportRows(const Exporter& exporter, const RowKind& kind, const std::string& suffix) {
        if (onlyTicked_ && !kind.tickedExported) {
            // The folder's own path is handed on. Kept: no-ticked-whatsapp.
            if (exporter.exportRows(kind, state_, summary_.folder, true))
                summary_.omitted.emplace_back(kind.file);
            return;
        }
        withList(state_, kind.live, [&]<class Row>(const List<Row>& live) {
            if constexpr (columns::Medium<Row>) {
                copyMedia(kind.file, live, state_.*std::get<ListField<Row>>(kind.deleted.field));
            } else {
                note(exporter.exportRows(kind, state_, inFolder(kind.file + suffix), onlyTicked_,
                                         watchRows()));
            }
        });
    }

    fs::path inFolder(const std::string& name) const {
        return summary_.folder / FileUtils::safeFileName(name);
    }

    std::string deviceName() const {
        if (!StringUtils::IsNullOrEmpty(state_.deviceInfo.DeviceName)) {
            return FileUtils::safeFileName(*state_.deviceInfo.DeviceName, maxNameBytes);
        }
        // A path that ends with "/" has no file name of its own.
        const fs::path backup = state_.BACKUP_DIRECTORY;
        const fs::path folder = backup.has_filename() ? backup : backup.parent_path();
        const std::string name = folder.filename().string();
        return name.empty() ? "Device" : FileUtils::safeFileName(name, maxNameBytes);
    }

    void note(const Exporter::Result& result) {
        if (!result) return;
        progress_.rowsDone += result->rows;
        if (result->cancelled) {
            summary_.cancelled = true;
            return;
        }
        (result->written() ? summary_.written : summary_.failed).push_back(*result);
    }

    template <class Media>
    void copyMedia(const char* word, const List<Media>& live, const List<Media>& deleted) {
        if (!copiesMedia_) return;
        MediaNames names;
        for (const auto* list : {&live, &deleted}) {
            for (const auto& item : *list) {
                if (!wanted(*item)) continue;
                if (!goesOn()) return;
                copyMedium(summary_.folder / word, *item, names);
                ++progress_.filesDone;
                if (watch_.progress) watch_.progress(progress_);
            }
        }
    }

    template <class Media>
    void copyMedium(const fs::path& folder, const Media& item, MediaNames& names) {
        const fs::path source = item.Location.value_or("");
        const BackupFile file = state_.openListed(source);
        // A photo library lists what lies in the network only, too.
        if (file.state == FileState::Absent) {
            ++summary_.missingMedia;
            return;
        }
        FileUtils::makePrivateFolders(folder);  // a failure shows in the copy
        const std::string name = item.Name.value_or(source.filename().string());
        const fs::path copy = folder / names.take(FileUtils::safeFileName(name, maxNameBytes));
        const auto opened = ReadableFile::open(file.path);
        const auto copied =
            opened ? opened->copyTo(copy, {state_.findListed(source).modified,
                                           [this] { return watch_.cancelled.stop_requested(); }})
                   : FileCopy{FileCopy::End::Unreadable, "no readable file"};
        switch (copied.end) {
            case FileCopy::End::Whole:
                return summary_.written.push_back({copy, 1, ""});
            case FileCopy::End::Cancelled:
                summary_.cancelled = true;
                return;
            case FileCopy::End::Unreadable:
                return summary_.unreadable.push_back(
                    {copy, 0, "cannot read " + source.string() + ": " + copied.cause});
            case FileCopy::End::Unwritten:
                return summary_.failed.push_back({copy, 0, copied.cause});
        }
    }

    void writeDeviceInfo(const fs::path& path) {
        CsvWriter csv(path);
        std::size_t rows = 0;
        forEachField(state_.deviceInfo, [&](const char* name, const auto& value) {
            csv.writeField(name);
            writeValue(csv, value);
            csv.finishLine();
            ++rows;
        });
        const ExportedFile file{path, rows, csv.close()};
        std::error_code ignored;
        if (!file.written()) fs::remove(path, ignored);
        (file.written() ? summary_.written : summary_.failed).push_back(file);
    }

    static void writeValue(CsvWriter& csv, const Text& value) { csv.writeField(value.view()); }
    static void writeValue(CsvWriter& csv, bool value) { csv.writeField(value ? "true" : "false"); }
    static void writeValue(CsvWriter& csv, std::int32_t value) {
        csv.writeField(std::to_string(value));
    }

    const ScanState& state_;
    const bool onlyTicked_;
    const ExportWatch& watch_;
    ExportFolder folder_;
    bool copiesMedia_ = true;
    ExportProgress progress_;
    ExportSummary summary_;
};

}  // namespace

ExportSummary exportAll(const ScanState& state, const std::filesystem::path& target,
                        const std::string& suffix, Date now, const ExportWatch& watch) {
    return ExportRun(state, false, watch).run(target, suffix, now);
}

ExportSummary exportTicked(const ScanState& state, const std::filesystem::path& target,
                           const std::string& suffix, Date now, const ExportWatch& watch) {
    return ExportRun(state, true, watch).run(target, suffix, now);
}

}  // namespace salvor
