#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "util/Bytes.h"

namespace salvor {

/// A key or a password: never copied, and wiped when it goes. While any lives, the process writes
/// no core dump.
class Secret {
  public:
    Secret() = default;
    /// So many zero bytes, to be filled.
    explicit Secret(std::size_t size);
    explicit Secret(Bytes bytes);
    /// Takes the bytes of `text` and wipes it.
    static Secret take(std::string& text);
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    ~Secret();

    Bytes bytes() const { return {bytes_.get(), size_}; }
    std::span<std::uint8_t> writable() { return {bytes_.get(), size_}; }
    std::size_t size() const { return size_; }

  private:
    void wipe();

    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
};

}  // namespace salvor
