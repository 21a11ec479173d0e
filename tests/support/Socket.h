#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "device/TlsObjects.h"
#include "tests/support/Identity.h"

namespace salvor {

/// A Unix socket of the test's side, blocking, with a TLS layer over it while a session is
/// encrypted. An operation that fails, also because the other side went, says so by its result.
/// `hangUp` ends what waits in another thread.
class Socket {
  public:
    /// Listens at `path`. Throws `std::system_error`.
    explicit Socket(const std::filesystem::path& path);
    explicit Socket(int fd) : fd_(fd) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket();

    /// Whoever connects next; null once it has been hung up.
    std::shared_ptr<Socket> accept() const;
    bool send(std::string_view bytes);
    /// Exactly `size` bytes.
    std::optional<std::string> receive(std::size_t size);
    void hangUp() const;

    /// Shakes hands, as a device does, with a computer that shows exactly `peerCertificate` (PEM);
    /// `onlyTls1` as devices of long ago.
    bool startTls(const Identity& own, const std::string& peerCertificate, bool onlyTls1);
    void stopTls();

  private:
    int fd_;
    tls::Session tls_;
};

}  // namespace salvor
