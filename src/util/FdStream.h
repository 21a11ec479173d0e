#pragma once

#include <array>
#include <ostream>
#include <streambuf>

namespace salvor {

/// Buffered writing to a file descriptor that remembers why it failed. The descriptor is not
/// closed. Not thread-safe.
class FdBuffer : public std::streambuf {
  public:
    explicit FdBuffer(int fd);
    FdBuffer(const FdBuffer&) = delete;
    FdBuffer& operator=(const FdBuffer&) = delete;
    ~FdBuffer() override;

    int errorNumber() const { return error_; }

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    int fd_;
    int error_ = 0;
    std::array<char, 1 << 16> buffer_{};
};

class FdStream : public std::ostream {
  public:
    explicit FdStream(int fd) : std::ostream(nullptr), buffer_(fd) { rdbuf(&buffer_); }

    /// Why a write failed (errno), or 0.
    int errorNumber() const { return buffer_.errorNumber(); }

  private:
    FdBuffer buffer_;
};

}  // namespace salvor
