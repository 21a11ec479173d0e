#include "carving/search/CompiledPattern.h"

#include <algorithm>

namespace salvor {
namespace {

// The smallest serial type that a class code does not accept any more, going downwards.
std::int64_t classLimit(std::int32_t code) {
    switch (code) {
        case -1:
            return 11;
        case -2:
            return 12;
        default:
            return -std::int64_t{code};
    }
}

}  // namespace

ColumnCodes::ColumnCodes(const std::vector<std::int32_t>& codes) {
    for (const std::int32_t code : codes) {
        if (code < 0) {
            above_ = std::min(above_, classLimit(code));
        } else if (code >= kSmall) {
            exact_.push_back(code);
        } else {
            small_[static_cast<std::size_t>(code) >> 6] |= std::uint64_t{1} << (code & 63);
        }
    }
    for (std::int64_t type = std::min(above_, kSmall) + 1; type < kSmall; ++type) {
        small_[static_cast<std::size_t>(type) >> 6] |= std::uint64_t{1} << (type & 63);
    }
}

bool ColumnCodes::acceptsLarge(std::int64_t serialType) const {
    if (serialType > above_) return true;
    return std::find(exact_.begin(), exact_.end(), serialType) != exact_.end();
}

bool ColumnCodes::mayBeginWith(unsigned byte) const {
    if (byte < 0x80) return acceptsByte(byte);
    // Only a first byte of 0x80, a leading zero, can begin a value below 128.
    return byte == 0x80 || above_ != INT64_MAX || !exact_.empty();
}

CompiledPattern::CompiledPattern(std::shared_ptr<const TablePattern> pattern)
    : source(std::move(pattern)) {
    const HeaderPattern header = source->Header();
    for (const auto& codes : header) columns.emplace_back(codes);
    beginsWithRowId = header.front().front() >= 1;
    firstChecked = beginsWithRowId ? 3 : 1;
}

}  // namespace salvor
