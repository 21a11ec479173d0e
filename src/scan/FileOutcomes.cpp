#include "scan/FileOutcomes.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>

#include "scan/Categories.h"

namespace salvor {
namespace {

const StoredFile& factsOf(Stored file) {
    return kStoredFiles[static_cast<std::size_t>(file)];
}

std::string placeOf(Stored file) {
    return fmt::format("{} {}", factsOf(file).domain, factsOf(file).path);
}

std::string whatLiesThere(const std::filesystem::path& place) {
    std::error_code ignored;
    if (std::filesystem::is_directory(place, ignored)) return "a folder lies in its place";
    if (std::filesystem::is_fifo(place, ignored)) return "a pipe lies in its place";
    return "what lies in its place is no regular file";
}

/// Why a file cannot be read that has yet to be opened; "" when nothing speaks against it.
std::string visibleFault(const FileFacts& facts) {
    switch (facts.state) {
        case FileState::Absent:
            return {};
        case FileState::NotAFile:
            return whatLiesThere(facts.place);
        case FileState::Unreadable:
            return "it is there but cannot be reached";
        case FileState::Locked:
            return "it is encrypted, and the password does not open its key";
        case FileState::Present:
            break;
    }
    return facts.size == 0 ? "the file is empty (0 bytes)" : "";
}

/// The other file that is read in place of this one, or nothing.
std::optional<Stored> readInstead(const ScanState& state, const CategoryFacts& category,
                                  Stored file) {
    if (!category.readsOneFile) return std::nullopt;
    const std::string& chosen = state.*category.database.field;
    if (chosen == storedNameOf(file) || !state.backupFiles()->find(chosen)) return std::nullopt;
    for (const Stored other : category.files)
        if (chosen == storedNameOf(other)) return other;
    return std::nullopt;
}

std::string withRows(const ReadingEnd& end, std::uint64_t before) {
    if (before + end.rows == 0)
        return end.reason + (end.kind == ReadingEnd::Kind::Budget ? "" : "; nothing was read");
    return fmt::format("{}; {} rows were read until then", end.reason, before + end.rows);
}

bool isFault(ReadOutcome outcome) {
    return outcome == ReadOutcome::Partly || outcome == ReadOutcome::Unreadable ||
           outcome == ReadOutcome::Locked;
}

}  // namespace

const char* toString(ReadOutcome outcome) {
    constexpr std::array kNames{"read", "partly", "unreadable", "absent", "locked"};
    return kNames.at(static_cast<std::size_t>(outcome));
}

std::string describe(const FileOutcome& outcome) {
    return fmt::format("{}: {} (stored as {}): {}", factsOf(outcome.category).title,
                       placeOf(outcome.file), storedNameOf(outcome.file), outcome.reason);
}

std::vector<FileOutcome> FileOutcomes::begin(const ScanState& state, std::int32_t dataType) {
    std::vector<Entry> entries;
    std::vector<Category> asked;
    std::vector<FileOutcome> faults;
    for (const CategoryFacts& category : categories()) {
        if (dataType != kEverything && dataType != codeOf(category.category)) continue;
        asked.push_back(category.category);
        for (const Stored file : category.files) {
            const FileFacts facts = state.backupFiles()->find(storedNameOf(file));
            Entry entry{{category.category, file, ReadOutcome::Read, visibleFault(facts),
                         facts.state == FileState::Present, facts.size}};
            FileOutcome& told = entry.told;
            if (const auto other = readInstead(state, category, file)) {
                told.outcome = ReadOutcome::Absent;
                told.reason =
                    told.present ? fmt::format("{} is read instead", placeOf(*other)) : "";
            } else if (facts.state == FileState::Absent) {
                told.outcome = ReadOutcome::Absent;
            } else if (!told.reason.empty()) {
                told.outcome = facts.state == FileState::Locked ? ReadOutcome::Locked
                                                                : ReadOutcome::Unreadable;
                faults.push_back(told);
            }
            entry.fault = isFault(told.outcome);
            entries.push_back(std::move(entry));
        }
    }
    const std::lock_guard lock(mutex_);
    entries_ = std::move(entries);
    asked_ = std::move(asked);
    faults_.clear();
    return faults;
}

FileOutcomes::Entry* FileOutcomes::find(std::string_view storedName) {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return storedName == storedNameOf(entry.told.file);
    });
    return found == entries_.end() ? nullptr : &*found;
}

std::optional<FileOutcome> FileOutcomes::add(std::string_view storedName, const ReadingEnd& end) {
    const std::lock_guard lock(mutex_);
    Entry* entry = find(storedName);
    if (entry == nullptr || entry->told.outcome == ReadOutcome::Absent) return std::nullopt;
    const std::uint64_t before = entry->rows;
    entry->rows += end.rows;
    entry->heard = true;
    if (end.kind == ReadingEnd::Kind::Whole || entry->fault) return std::nullopt;
    entry->fault = true;
    const bool nothing = entry->rows == 0 && end.kind != ReadingEnd::Kind::Budget;
    entry->told.outcome = nothing ? ReadOutcome::Unreadable : ReadOutcome::Partly;
    entry->told.reason = withRows(end, before);
    return entry->told;
}

void FileOutcomes::addFault(Category category, const std::string& reason) {
    const std::lock_guard lock(mutex_);
    if (std::find(asked_.begin(), asked_.end(), category) == asked_.end()) return;
    faults_.push_back(category);
    for (Entry& entry : entries_) {
        FileOutcome& told = entry.told;
        if (told.category != category || told.outcome != ReadOutcome::Read) continue;
        told.outcome = ReadOutcome::Partly;
        told.reason = reason;
        entry.fault = true;
    }
}

std::vector<FileOutcome> FileOutcomes::all() const {
    const std::lock_guard lock(mutex_);
    std::vector<FileOutcome> outcomes;
    for (const Entry& entry : entries_) {
        FileOutcome& told = outcomes.emplace_back(entry.told);
        if (entry.heard || told.outcome != ReadOutcome::Read) continue;
        told.outcome = ReadOutcome::Partly;
        told.reason = "the scan ended before the file was read to its end";
    }
    return outcomes;
}

std::optional<ReadOutcome> FileOutcomes::faultOf(Category category) const {
    const std::lock_guard lock(mutex_);
    const bool ofItself = std::find(faults_.begin(), faults_.end(), category) != faults_.end();
    std::size_t faults = 0;
    std::size_t nothingRead = 0;
    std::size_t there = 0;
    for (const Entry& entry : entries_) {
        if (entry.told.category != category || entry.told.outcome == ReadOutcome::Absent) continue;
        ++there;
        faults += entry.fault ? 1 : 0;
        nothingRead += entry.told.outcome == ReadOutcome::Unreadable ||
                               entry.told.outcome == ReadOutcome::Locked
                           ? 1
                           : 0;
    }
    if (faults == 0 && !ofItself) return std::nullopt;
    return there > 0 && nothingRead == there ? ReadOutcome::Unreadable : ReadOutcome::Partly;
}

bool FileOutcomes::anyFault() const {
    const std::lock_guard lock(mutex_);
    return !faults_.empty() || std::any_of(entries_.begin(), entries_.end(),
                                           [](const Entry& entry) { return entry.fault; });
}

}  // namespace salvor
