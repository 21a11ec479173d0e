#include "carving/deep/Facts.h"

#include <fmt/format.h>

namespace salvor::deep {
namespace {

// Less free space than this says nothing about how it came to be zero.
constexpr std::uint64_t kTelling = 64;

void addTable(const TableFacts& table, std::vector<std::string>& out) {
    if (table.internal) return;
    if (table.dropped) {
        out.push_back(fmt::format("Table {} was dropped; {} of its rows are left.", table.name,
                                  table.deleted));
    } else if (table.gone > table.deleted) {
        const bool one = table.gone == 1;
        out.push_back(fmt::format("About {} {} of {} {} deleted; the bytes of {} are left.",
                                  table.gone, one ? "row" : "rows", table.name,
                                  one ? "was" : "were", table.deleted));
    } else if (table.deleted != 0) {
        out.push_back(fmt::format("{} deleted rows of {} are left.", table.deleted, table.name));
    }
}

}  // namespace

bool Facts::secureDeleteSeen() const {
    return freedBytes >= kTelling && freedZeroBytes == freedBytes;
}

std::vector<std::string> Facts::sentences() const {
    std::vector<std::string> out;
    for (const TableFacts& table : tables) addTable(table, out);
    if (cut) out.emplace_back("The file is shorter than its header says: pages are missing.");
    if (secureDeleteSeen()) {
        out.emplace_back("All freed space is zero: deleted rows are overwritten at once.");
    } else if (freeBytes != 0) {
        out.push_back(fmt::format("{} of {} free bytes are zero.", zeroBytes, freeBytes));
    }
    if (autoVacuum && !incrementalVacuum)
        out.emplace_back("Pages that become free are cut off the file at once.");
    if (logFrames == 0) out.emplace_back("There is no write-ahead log with older states.");
    return out;
}

}  // namespace salvor::deep
