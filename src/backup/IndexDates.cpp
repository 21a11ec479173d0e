#include "backup/IndexDates.h"

#include <algorithm>
#include <charconv>

#include "backup/ParseMbdb.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

std::optional<std::uint64_t> beginningOf(const std::string& storedName) {
    constexpr std::size_t kDigits = 16;
    if (storedName.size() < kDigits) return std::nullopt;
    std::uint64_t beginning = 0;
    const char* end = storedName.data() + kDigits;
    const auto read = std::from_chars(storedName.data(), end, beginning, 16);
    return read.ptr == end ? std::optional(beginning) : std::nullopt;
}

}  // namespace

IndexDates::IndexDates(const std::filesystem::path& index) {
    const auto file = MappedFile::open(index);
    if (!file) return;
    ParseMbdb::visit(file->bytes(), [this](MDFileInfo&& record) {
        const auto beginning = beginningOf(record.strHash);
        if (beginning && record.intmTime != 0) dates_.emplace_back(*beginning, record.intmTime);
    });
    std::sort(dates_.begin(), dates_.end());
}

std::optional<std::int64_t> IndexDates::of(const std::string& storedName) const {
    const auto beginning = beginningOf(storedName);
    if (!beginning) return std::nullopt;
    const auto found = std::lower_bound(dates_.begin(), dates_.end(), Dated(*beginning, 0));
    if (found == dates_.end() || found->first != *beginning) return std::nullopt;
    return found->second;
}

}  // namespace salvor
