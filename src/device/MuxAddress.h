#pragma once

#include <memory>
#include <stop_token>
#include <string>

#include "device/ByteLink.h"

namespace salvor {

/// Where the multiplexer daemon is looked for: what USBMUXD_SOCKET_ADDRESS says ("UNIX:/path" or
/// "host:port", the number of an IPv6 host in brackets), else its usual socket.
std::string muxAddress();

/// A connection to whoever listens there. `kAMDNoDaemon` when nobody does. Looking up a host's name
/// takes the time that the system gives it.
AMDStatus connectToMux(std::unique_ptr<ByteLink>& link, const std::stop_token& stop,
                       ByteLink::Deadline deadline);

}  // namespace salvor
