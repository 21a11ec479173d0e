#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/Identity.h"
#include "tests/support/Socket.h"

namespace salvor {

/// The device's side of a link to one of its services: a socket, with a TLS layer over it while a
/// session is encrypted.
class ServiceLink {
  public:
    explicit ServiceLink(const Socket& socket);
    ServiceLink(const ServiceLink&) = delete;
    ServiceLink& operator=(const ServiceLink&) = delete;
    ~ServiceLink();

    bool send(std::string_view bytes);
    std::optional<std::string> receive(std::size_t size);
    /// Shakes hands with a computer that shows exactly `peerCertificate` (PEM); `onlyTls1` as
    /// devices of long ago.
    bool startTls(const Identity& own, const std::string& peerCertificate, bool onlyTls1);
    void stopTls();

  private:
    struct Tls;
    const Socket& socket_;
    std::unique_ptr<Tls> tls_;
};

}  // namespace salvor
