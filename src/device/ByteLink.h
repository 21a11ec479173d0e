#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <sys/socket.h>
#include <vector>

#include "device/AMDStatus.h"
#include "util/Bytes.h"

namespace salvor {

struct PairRecord;

/// A stream of bytes to a service of a device: a connected socket, later a TLS layer over it.
/// Every operation ends with `kAMDTimedOut` at the deadline, with `kAMDCancelled` soon after the
/// stop token is asked for, and with `kAMDHungUp` when the other side goes.
class ByteLink {
  public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// A link to who listens at the address; `kAMDHungUp` when nobody does.
    static AMDStatus connect(const sockaddr* address, socklen_t size,
                             std::unique_ptr<ByteLink>& link, const std::stop_token& stop,
                             Deadline deadline);
    /// Takes the socket over.
    ByteLink(int fd, std::stop_token stop);
    ByteLink(const ByteLink&) = delete;
    ByteLink& operator=(const ByteLink&) = delete;
    ~ByteLink();

    AMDStatus sendAll(Bytes data, Deadline deadline);
    /// Fills `data` whole.
    AMDStatus receiveAll(std::span<std::uint8_t> data, Deadline deadline);
    /// Appends `size` bytes, taken in chunks: a size alone costs no memory.
    AMDStatus receiveBlock(std::size_t size, std::vector<std::uint8_t>& data, Deadline deadline);
    /// Encrypts what follows; the record names this computer and the device to each other.
    AMDStatus startTls(const PairRecord& record, Deadline deadline);
    bool encrypted() const { return tls_ != nullptr; }

  private:
    struct Tls;
    AMDStatus waitFor(short events, Deadline deadline) const;
    template <class Operation>
    AMDStatus drive(Operation operation, Deadline deadline);
    /// Moves all of `data` with one of the two, each of which moves what it can.
    template <class Span, class OverTls, class InTheClear>
    AMDStatus moveAll(Span data, Deadline deadline, short events, OverTls overTls,
                      InTheClear inTheClear);

    int fd_;
    std::stop_token stop_;
    std::unique_ptr<Tls> tls_;
};

}  // namespace salvor
