#pragma once

#include <array>
#include <atomic>
#include <ostream>
#include <streambuf>

namespace salvor {

/// Buffered writing to a file descriptor that remembers why it failed. The descriptor is not
/// closed. Not thread-safe but for `giveUp`.
class FdBuffer : public std::streambuf {
  public:
    explicit FdBuffer(int fd);
    FdBuffer(const FdBuffer&) = delete;
    FdBuffer& operator=(const FdBuffer&) = delete;
    ~FdBuffer() override;

    int errorNumber() const { return error_; }
    /// From now on a write that would have to wait for a reader fails with ECANCELED; so does one
    /// that waits, within a tenth of a second.
    void giveUp() { givenUp_ = true; }

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    /// False when it was given up meanwhile.
    bool waitForReader();

    int fd_;
    bool waits_;  ///< for a reader, as pipes and terminals do
    std::atomic<bool> givenUp_{false};
    int error_ = 0;
    std::array<char, 1 << 16> buffer_{};
};

class FdStream : public std::ostream {
  public:
    explicit FdStream(int fd) : std::ostream(nullptr), buffer_(fd) { rdbuf(&buffer_); }

    /// Why a write failed (errno), or 0.
    int errorNumber() const { return buffer_.errorNumber(); }
    void giveUp() { buffer_.giveUp(); }

  private:
    FdBuffer buffer_;
};

}  // namespace salvor
