#include "plain_matcher.h"

namespace salvor::reference {
namespace {

bool accepts(std::int32_t code, std::int64_t type) {
    if (code >= 0) return type == code;
    if (code == -1) return type >= 12;
    if (code == -2) return type >= 13;
    return type > -std::int64_t{code};
}

bool anyAccepts(const std::vector<std::int32_t>& codes, std::int64_t type) {
    for (const std::int32_t code : codes)
        if (accepts(code, type)) return true;
    return false;
}

}  // namespace

PlainMatcher::PlainMatcher(const std::vector<PlainPattern>& patterns) {
    for (const PlainPattern& pattern : patterns)
        if (pattern.hasHeader) patterns_.push_back(pattern);
}

bool PlainMatcher::matchAt(const Buffer& buffer, std::int64_t p, const PlainPattern& pattern,
                           MatchedHeader& info) const {
    const auto& columns = pattern.columns;
    const auto length = static_cast<std::int64_t>(buffer.size());
    for (std::size_t c = 0; c < columns.size();) {
        const std::int64_t at = p + info.taken;
        if (at > length - 1) return true;  // a header that the end cuts off
        if (c == 0 && columns[0][0] >= 1) {
            const VarInt rowId = readVarint(buffer, at);
            info.rowId = rowId.value;
            info.entries.insert(info.entries.end(), {{0, rowId.length}, {0, 1}, {0, 1}});
            info.taken += rowId.length + 2;
            c += 3;
        } else if (c == 0) {
            info.entries.push_back({0, 1});
            info.taken += 1;
            c += 1;
        } else {
            const VarInt type = readVarint(buffer, at);
            info.entries.push_back({type.value, type.length});
            info.taken += type.length;
            if (!anyAccepts(columns[c], type.value)) return false;
            c += 1;
        }
    }
    return true;
}

MatchedHeader PlainMatcher::find(const Buffer& buffer, std::int64_t start) const {
    for (const PlainPattern& pattern : patterns_) {
        const auto last = static_cast<std::int64_t>(buffer.size()) -
                          static_cast<std::int64_t>(pattern.columns.size());
        for (std::int64_t p = start; p <= last; ++p) {
            MatchedHeader info;
            if (!matchAt(buffer, p, pattern, info)) continue;
            info.valid = true;
            info.start = p;
            info.pattern = &pattern;
            return info;
        }
    }
    return {};
}

}  // namespace salvor::reference
