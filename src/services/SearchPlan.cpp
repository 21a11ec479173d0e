#include "services/SearchPlan.h"

#include <limits>

#include "scan/Categories.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

/// The carvers that a service runs over one file.
struct Passes {
    Category category;
    Stored file;
    int carvers;
    int fromVersion = 0;  ///< major version of iOS from which the file is searched
    int belowVersion = std::numeric_limits<int>::max();
};

constexpr Passes kPasses[] = {
    {Category::Messages, Stored::Messages, 6},   {Category::Contacts, Stored::AddressBook, 2},
    {Category::Calls, Stored::CallsBefore8, 1},  {Category::Calls, Stored::CallsFrom8, 1},
    {Category::WhatsApp, Stored::WhatsApp, 1},   {Category::Notes, Stored::NotesBefore9, 2, 0, 9},
    {Category::Notes, Stored::NotesFrom9, 2, 9}, {Category::Calendar, Stored::Calendar, 1},
};

}  // namespace

std::uint64_t bytesToSearch(const ScanState& state, std::int32_t dataType) {
    const auto version = state.deviceInfo.iOSMajorVersion;
    std::uint64_t bytes = 0;
    for (const Passes& passes : kPasses) {
        if (dataType != kEverything && dataType != codeOf(passes.category)) continue;
        if (version < passes.fromVersion || version >= passes.belowVersion) continue;
        const auto file = state.backupFiles()->find(storedNameOf(passes.file));
        if (file) bytes += file.size * static_cast<std::uint64_t>(passes.carvers);
    }
    return bytes;
}

}  // namespace salvor
