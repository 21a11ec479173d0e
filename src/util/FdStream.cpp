#include "util/FdStream.h"

#include <cerrno>
#include <cstddef>
#include <unistd.h>

namespace salvor {

FdBuffer::FdBuffer(int fd) : fd_(fd) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

FdBuffer::~FdBuffer() {
    FdBuffer::sync();
}

int FdBuffer::sync() {
    const char* next = pbase();
    while (error_ == 0 && next < pptr()) {
        const auto written = ::write(fd_, next, static_cast<std::size_t>(pptr() - next));
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
