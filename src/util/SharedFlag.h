#pragma once

#include <atomic>

namespace salvor {

/// A boolean of a record that one thread may set while another copies the record.
class SharedFlag {
  public:
    SharedFlag(bool value = false) noexcept : value_(value) {}
    SharedFlag(const SharedFlag& other) noexcept : value_(bool(other)) {}
    SharedFlag& operator=(const SharedFlag& other) noexcept {
        value_ = bool(other);
        return *this;
    }
    ~SharedFlag() = default;

    operator bool() const noexcept { return value_; }

  private:
    std::atomic<bool> value_;
};

}  // namespace salvor
