#include "backup/IndexCursor.h"

#include "util/Utf8.h"

namespace salvor {

Bytes IndexCursor::take(std::size_t count) {
    if (cutShort_ || count > data_.size() - position_) {
        cutShort_ = true;
        return {};
    }
    const Bytes taken = data_.subspan(position_, count);
    position_ += count;
    return taken;
}

std::uint32_t IndexCursor::getint(std::size_t count) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : take(count)) value = (value << 8) | byte;
    return value;
}

std::string IndexCursor::getbytes() {
    const std::uint32_t length = getint(2);
    if (cutShort_ || length == 0xFFFF) return {};
    const Bytes raw = take(length);
    return {raw.begin(), raw.end()};
}

std::string IndexCursor::getstring() {
    return textOf(getbytes());
}

std::string IndexCursor::textOf(const std::string& bytes) {
    std::string text = bytes.substr(0, bytes.find('\0'));
    return isValidUtf8(text) ? text : "<null>";
}

}  // namespace salvor
