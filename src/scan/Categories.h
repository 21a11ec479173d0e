#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "scan/Category.h"
#include "scan/ScanState.h"
#include "scan/StoredNames.h"

namespace salvor {

template <class Row>
using ListField = List<Row> ScanState::*;

/// A list of rows that people see, with the key under which a report has it.
struct NamedList {
    const char* name = nullptr;
    std::variant<ListField<SMS>, ListField<Photo>, ListField<Video>, ListField<Contact>,
                 ListField<CallLog>, ListField<WhatsApp>, ListField<Note>,
                 ListField<InternetHistory>, ListField<Calendar>>
        field;
};

struct NamedCounter {
    const char* name = nullptr;
    ScanState::Counter ScanState::*field = nullptr;
};

/// The stored name of a database, with its key and its place (from 1) in a report.
struct NamedDatabase {
    const char* name = nullptr;
    std::string ScanState::*field = nullptr;
    int place = 0;
};

/// One kind of rows of a category: live ones and deleted ones, their counters, their export.
struct RowKind {
    NamedList live, deleted;
    NamedCounter liveCount, deletedCount;

    /// In tables, reports, ticks and exports. Without it the counters alone are told.
    bool listed = true;
    /// The deleted list is emptied once more before the recovery begins.
    bool emptiedForRecovery = false;
    /// What a scan sets to zero before it begins.
    enum class Zeroed { DeletedCount, LiveCount, None } zeroed = Zeroed::DeletedCount;

    int exported = 0;  ///< place in an export, from 1; between them stand lists of no category
    const char* file = nullptr;  ///< name of the exported file before the suffix, or of the folder
    bool deletedExported = true;
    bool tickedExported = true;
};

/// How the live rows of a category are told in the status texts.
struct LiveReading {
    const char* status = nullptr;           ///< while they are read
    const char* countText = nullptr;        ///< behind the number in the result
    Category counted = Category::Messages;  ///< whose number of live rows the result shows
};

/// When a scan of one category presets the finished flags of the others.
enum class FlagPreset { BeforeCreation, BeforeStart, AfterStart };

/// The thread that runs a category's service.
struct RecoveryWorker {
    const char* name = nullptr;
    FlagPreset preset = FlagPreset::AfterStart;
    std::optional<Category> waitsFor = std::nullopt;     ///< whose recovered rows this one needs
    bool clearsFlagAfterWait = false;                    ///< its own finished flag
    std::optional<Category> presetTwice = std::nullopt;  ///< whose flag the presets set once more
    const char* status = nullptr;                        ///< before the service runs
    bool redrawsView = false;                            ///< after the service has run
    bool refreshesTabs = false;                          ///< after that
};

/// The places of a category, from 1, in everything that goes through all of them; 0: not among
/// these. Kept: orders-differ.
struct Places {
    int reading = 0;     ///< live rows by SQL; pictures are swept before, the browser's service
                         ///< reads its rows itself
    int worker = 0;      ///< start of the workers
    int wait = 0;        ///< waiting for the workers
    int making = 0;      ///< making the services
    int module = 0;      ///< services run one after the other without the recovery driver
    int liveKey = 0;     ///< keys of live lists in a report
    int deletedKey = 0;  ///< keys of deleted lists in a report
};

/// All that is known of a category below the boxes that read, carve and export it.
struct CategoryFacts {
    Category category;
    ServiceIndex service;
    const char* word;   ///< in command lines and files, such as "calls"
    const char* title;  ///< in tables, such as "Calls"
    LiveReading reading;
    RecoveryWorker worker;
    Places places;
    NamedDatabase database;
    /// What its rows are read from and carved out of, in the order of a report.
    std::span<const Stored> files;
    /// Of its files the one that `database` names; the others are passed over.
    bool readsOneFile = false;
    std::span<const RowKind> kinds;
    /// Empties lists that are neither `live` nor `deleted` of a kind.
    void (*clearFurther)(ScanState& state) = [](ScanState&) {};
};

/// The categories by code.
std::span<const CategoryFacts> categories();
const CategoryFacts& factsOf(Category category);
/// Those that have this place, in its order.
std::vector<const CategoryFacts*> categoriesBy(int Places::*place);

/// Nothing for a code that no category has.
std::optional<Category> categoryOf(std::int32_t code);
/// The code of a category's word or of the code itself in digits; "all" is 0.
std::optional<std::int32_t> categoryCode(std::string_view wordOrCode);
/// "all (default), messages, ... or a code 0 to 8".
const std::string& categoryWords();

struct CategoryCounts {
    const CategoryFacts& category;
    std::size_t live = 0;
    std::size_t deleted = 0;
};

/// What stands in the lists of the categories that a scan with this code covers.
std::vector<CategoryCounts> countRecords(const ScanState& state, std::int32_t code);

/// Empties every list of a category.
void clearLists(const CategoryFacts& facts, ScanState& state);

/// The database names of all categories and of the other lists, in the order of a report.
std::vector<NamedDatabase> databaseNames();

/// Calls `use` with the list itself.
template <class State, class Use>
decltype(auto) withList(State& state, const NamedList& list, Use&& use) {
    return std::visit([&](auto field) -> decltype(auto) { return use(state.*field); }, list.field);
}

}  // namespace salvor
