#pragma once

#include <filesystem>
#include <optional>

#include "util/Bytes.h"

namespace salvor {

/// A whole file, mapped read-only into memory. The file is opened without updating its access
/// time where the system allows it. It keeps the size that it has at that moment: what is lost
/// later, because it shrinks or its medium fails, reads as zeros.
class MappedFile {
  public:
    /// The mapped file, or nothing when it cannot be opened, is no regular file or cannot be
    /// mapped. An empty file gives an empty view.
    static std::optional<MappedFile> open(const std::filesystem::path& path);

    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    Bytes bytes() const { return {data_, size_}; }

  private:
    MappedFile(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace salvor
