#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace salvor {

/// A Unix socket of the test's side, blocking. An operation that fails, also because the other
/// side went, says so by its result. `hangUp` ends what waits in another thread.
class Socket {
  public:
    /// Listens at `path`. Throws `std::system_error`.
    static Socket listenAt(const std::filesystem::path& path);

    explicit Socket(int fd = -1) : fd_(fd) {}
    Socket(Socket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Socket& operator=(Socket&&) = delete;
    ~Socket();

    bool valid() const { return fd_ >= 0; }
    int fd() const { return fd_; }
    Socket accept() const;
    bool send(std::string_view bytes) const;
    /// Exactly `size` bytes.
    std::optional<std::string> receive(std::size_t size) const;
    void hangUp() const;

  private:
    int fd_;
};

}  // namespace salvor
