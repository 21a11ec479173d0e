#include "carving/deep/Candidate.h"

#include <algorithm>

#include "carving/format/RecordHeader.h"

namespace salvor::deep {

bool Candidate::place(std::uint64_t header, std::uint64_t body, std::uint32_t usable,
                      bool tableLeaf) {
    payload = header + body;
    local = localPayload(payload, usable, tableLeaf);
    if (local < header) return false;
    end = bodyAt + local - static_cast<std::uint32_t>(header) + (local < payload ? 4 : 0);
    end = std::max(end, start + 4);
    return true;
}

bool Candidate::types(Bytes page, std::vector<std::uint64_t>& into) const {
    into.clear();
    if (reading == Reading::AliasLost || reading == Reading::TypeGuessed) into.push_back(lostType);
    if (!readTypes(page, typesAt, bodyAt, into)) return false;
    return into.size() == columns;
}

}  // namespace salvor::deep
