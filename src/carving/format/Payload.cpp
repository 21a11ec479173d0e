#include "carving/format/Payload.h"

#include "carving/format/BigEndian.h"

namespace salvor {

Bytes Payload::gather(Bytes page, const Cell& cell, std::uint32_t usable,
                      const PageAtTime& pageAt) {
    const Bytes local = slice(page, cell.payloadAt, cell.local);
    chain_.clear();
    complete_ = local.size() == cell.local;
    if (cell.overflowAt == 0 || !complete_) return local;
    buffer_.assign(local.begin(), local.end());
    complete_ = followOverflow(bigEndian32(page, cell.overflowAt), cell.payload - cell.local,
                               usable, pageAt, [&](std::uint32_t number, Bytes part) {
                                   chain_.push_back(number);
                                   buffer_.insert(buffer_.end(), part.begin(), part.end());
                               });
    return buffer_;
}

}  // namespace salvor
