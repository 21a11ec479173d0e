#pragma once

#include <cstdint>
#include <string>

#include "util/Bytes.h"

namespace salvor {

/// Reads the primitives of the index file and advances. A read that would pass the end of the
/// data yields an empty value and sets `cutShort` for good.
class IndexCursor {
  public:
    IndexCursor(Bytes data, std::size_t position) : data_(data), position_(position) {}

    std::size_t position() const { return position_; }
    bool atEnd() const { return position_ >= data_.size(); }
    bool cutShort() const { return cutShort_; }

    /// A big-endian integer of 1 to 8 bytes in a 32-bit accumulator: of 8 bytes only the low 32
    /// bits survive. Kept: sizes-32-bit.
    std::uint32_t getint(std::size_t count);
    /// A text with a 2-byte length; the length 0xFFFF is the empty text. The text ends at its
    /// first zero byte; one that is not valid UTF-8 reads "<null>".
    std::string getstring();
    /// The bytes of such a text as they are: a key.
    std::string getbytes();
    /// What `getstring` makes of the bytes of a text.
    static std::string textOf(const std::string& bytes);

  private:
    Bytes take(std::size_t count);

    Bytes data_;
    std::size_t position_;
    bool cutShort_ = false;
};

}  // namespace salvor
