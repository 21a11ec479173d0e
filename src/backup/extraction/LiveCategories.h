#pragma once

#include <cstdint>
#include <span>
#include <stop_token>

#include "scan/ScanState.h"

namespace salvor {

/// Data-type codes of a scan.
enum DataType : std::int32_t {
    kEverything = 0,
    kMessages = 1,
    kPhotosAndVideos = 2,
    kContacts = 3,
    kCallHistory = 4,
    kWhatsApp = 5,
    kNotes = 6,
    kInternetHistory = 7,
    kCalendar = 8,
};

/// A category whose live rows the extraction reads with SQL.
struct LiveCategory {
    std::int32_t code;
    const char* name;       ///< status text while it is read
    const char* countText;  ///< what follows the number in the status text of the result
    /// Empties the category's lists of all and of deleted records.
    void (*clear)(ScanState& state);
    /// Opens the category's database and fills its live list; one that does not open leaves it
    /// empty.
    void (*read)(ScanState& state, const std::stop_token& cancelled);
    /// The number that the result shows.
    std::size_t (*shownCount)(const ScanState& state);
};

/// The categories in the order in which a scan of everything reads them.
std::span<const LiveCategory> liveCategories();

/// Empties the lists of deleted messages, contacts, calls, events and WhatsApp messages.
void clearDeletedLists(ScanState& state);

}  // namespace salvor
