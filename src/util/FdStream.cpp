#include "util/FdStream.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace salvor {

namespace {

// What a pipe that can take something takes without waiting.
constexpr std::size_t kPiece = PIPE_BUF;

bool waitsForReader(int fd) {
    struct stat info {};
    return ::fstat(fd, &info) == 0 && !S_ISREG(info.st_mode);
}

}  // namespace

FdBuffer::FdBuffer(int fd) : fd_(fd), waits_(waitsForReader(fd)) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

FdBuffer::~FdBuffer() {
    FdBuffer::sync();
}

bool FdBuffer::waitForReader() {
    constexpr int kPatience = 100;  // milliseconds
    pollfd one{fd_, POLLOUT, 0};
    for (;;) {
        const int ready = ::poll(&one, 1, kPatience);
        // What else poll may have to say, the write says better.
        if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
        if (!givenUp_) continue;
        error_ = ECANCELED;
        return false;
    }
}

int FdBuffer::sync() {
    const char* next = pbase();
    while (error_ == 0 && next < pptr()) {
        auto bytes = static_cast<std::size_t>(pptr() - next);
        if (waits_) {
            if (!waitForReader()) break;
            bytes = std::min(bytes, kPiece);
        }
        const auto written = ::write(fd_, next, bytes);
        if (written >= 0)
            next += written;
        else if (errno != EINTR)
            error_ = errno;
    }
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return error_ == 0 ? 0 : -1;
}

FdBuffer::int_type FdBuffer::overflow(int_type character) {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(character);
        pbump(1);
    }
    return traits_type::not_eof(character);
}

}  // namespace salvor
