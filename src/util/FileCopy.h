#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace salvor {

/// How the copying of a file ended; unless `Whole` there is no copy.
struct FileCopy {
    enum class End : std::uint8_t { Whole, Cancelled, Unreadable, Unwritten };

    End end = End::Whole;
    std::string cause;  ///< "" for a whole one

    explicit operator bool() const { return end == End::Whole; }
};

struct FileCopyOptions {
    std::optional<std::int64_t> modified;  ///< Unix seconds; without it the copy keeps the file's
    std::function<bool()> cancelled;       ///< asked now and then
};

}  // namespace salvor
