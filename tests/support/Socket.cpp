#include "tests/support/Socket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace salvor {

Socket Socket::listenAt(const std::filesystem::path& path) {
    Socket made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = path.string();
    if (name.size() >= sizeof address.sun_path)
        throw std::system_error(ENAMETOOLONG, std::generic_category(), name);
    std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
    ::unlink(name.c_str());
    constexpr int kWaiting = 64;
    if (::bind(made.fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(made.fd_, kWaiting) != 0)
        throw std::system_error(errno, std::generic_category(), name);
    return made;
}

Socket::~Socket() {
    if (fd_ >= 0) ::close(fd_);
}

Socket Socket::accept() const {
    return Socket(::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC));
}

bool Socket::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto count = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::string> Socket::receive(std::size_t size) const {
    std::string bytes;
    char chunk[4096];
    while (bytes.size() < size) {
        const auto count = ::recv(fd_, chunk, std::min(sizeof chunk, size - bytes.size()), 0);
        if (count == 0 || (count < 0 && errno != EINTR)) return std::nullopt;
        if (count > 0) bytes.append(chunk, static_cast<std::size_t>(count));
    }
    return bytes;
}

void Socket::hangUp() const {
    ::shutdown(fd_, SHUT_RDWR);
}

}  // namespace salvor
