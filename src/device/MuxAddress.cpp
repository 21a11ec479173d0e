#include "device/MuxAddress.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <netdb.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace salvor {
namespace {

constexpr auto kVariable = "USBMUXD_SOCKET_ADDRESS";
constexpr std::string_view kUsualSocket = "/var/run/usbmuxd";
constexpr std::string_view kUnix = "UNIX:";

AMDStatus connectToFile(std::string_view path, std::unique_ptr<ByteLink>& link,
                        const std::stop_token& stop, ByteLink::Deadline deadline) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= std::size(address.sun_path)) return kAMDNoDaemon;
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    return ByteLink::connect(reinterpret_cast<const sockaddr*>(&address), sizeof address, link,
                             stop, deadline);
}

AMDStatus connectToHost(const std::string& host, const std::string& port,
                        std::unique_ptr<ByteLink>& link, const std::stop_token& stop,
                        ByteLink::Deadline deadline) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), port.c_str(), &wanted, &found) != 0) return kAMDNoDaemon;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(found, &::freeaddrinfo);
    AMDStatus status = kAMDNoDaemon;
    for (const addrinfo* one = found; one != nullptr; one = one->ai_next) {
        status = ByteLink::connect(one->ai_addr, one->ai_addrlen, link, stop, deadline);
        if (status != kAMDHungUp) break;
    }
    return status;
}

}  // namespace

std::string muxAddress() {
    const char* given = std::getenv(kVariable);
    return given != nullptr && *given != '\0' ? given : std::string(kUsualSocket);
}

AMDStatus connectToMux(std::unique_ptr<ByteLink>& link, const std::stop_token& stop,
                       ByteLink::Deadline deadline) {
    const std::string address = muxAddress();
    AMDStatus status = kAMDNoDaemon;
    const auto colon = address.rfind(':');
    if (address.starts_with(kUnix)) {
        status =
            connectToFile(std::string_view(address).substr(kUnix.size()), link, stop, deadline);
    } else if (address.starts_with('/')) {
        status = connectToFile(address, link, stop, deadline);
    } else if (colon != std::string::npos) {
        std::string host = address.substr(0, colon);
        if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
        status = connectToHost(host, address.substr(colon + 1), link, stop, deadline);
    }
    return status == kAMDHungUp ? kAMDNoDaemon : status;
}

}  // namespace salvor
