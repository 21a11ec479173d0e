#define ZLIB_CONST  // what is unpacked stays as it is

#include "live/NoteText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <zlib.h>

#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr std::string_view kGzipMagic = "\x1F\x8B";
constexpr int kGzipWindow = 15 + 16;

std::optional<std::string> unpack(std::string_view data, std::uint64_t most, std::uint64_t& total) {
    if (data.size() > std::numeric_limits<uInt>::max()) return std::nullopt;
    z_stream stream{};
    if (inflateInit2(&stream, kGzipWindow) != Z_OK) return std::nullopt;
    const std::unique_ptr<z_stream, int (*)(z_stream*)> ending(&stream, inflateEnd);
    stream.next_in = reinterpret_cast<const Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());

    std::string unpacked;
    std::array<char, 1 << 15> block{};
    for (int result = Z_OK; result != Z_STREAM_END;) {
        stream.next_out = reinterpret_cast<Bytef*>(block.data());
        stream.avail_out = static_cast<uInt>(block.size());
        result = inflate(&stream, Z_NO_FLUSH);
        const std::size_t written = block.size() - stream.avail_out;
        total += written;
        if (result != Z_OK && result != Z_STREAM_END) return std::nullopt;
        if (written > most - unpacked.size()) return std::nullopt;
        unpacked.append(block.data(), written);
    }
    return unpacked;
}

/// Reads the fields of one protocol-buffer message, front to back.
class FieldReader {
  public:
    explicit FieldReader(std::string_view message) : rest_(message) {}

    /// The bytes of the first length-delimited field with this number, nothing without one.
    std::optional<std::string_view> find(std::uint64_t number) {
        while (!rest_.empty()) {
            const auto key = varint();
            if (!key) return std::nullopt;
            const bool wanted = *key >> 3 == number;
            const auto bytes = take(static_cast<int>(*key & 7));
            if (!bytes) return std::nullopt;
            if (wanted && (*key & 7) == kDelimited) return bytes;
        }
        return std::nullopt;
    }

  private:
    static constexpr int kVarint = 0, kEightBytes = 1, kDelimited = 2, kFourBytes = 5;

    std::optional<std::uint64_t> varint() {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += 7) {
            const auto byte = static_cast<std::uint8_t>(rest_.front());
            rest_.remove_prefix(1);
            value |= std::uint64_t{byte & 0x7FU} << shift;
            if (byte < 0x80) return value;
        }
        return std::nullopt;
    }

    std::optional<std::string_view> bytes(std::uint64_t length) {
        if (length > rest_.size()) return std::nullopt;
        const auto field = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return field;
    }

    std::optional<std::string_view> take(int wireType) {
        switch (wireType) {
            case kVarint:
                return varint() ? std::optional(std::string_view()) : std::nullopt;
            case kEightBytes:
                return bytes(8);
            case kFourBytes:
                return bytes(4);
            case kDelimited: {
                const auto length = varint();
                return length ? bytes(*length) : std::nullopt;
            }
            default:
                return std::nullopt;
        }
    }

    std::string_view rest_;
};

}  // namespace

Text noteTextOfDocument(std::string_view document) {
    constexpr std::array<std::uint64_t, 3> path = {2, 3, 2};
    for (const auto number : path) {
        const auto field = FieldReader(document).find(number);
        if (!field) return std::nullopt;
        document = *field;
    }
    if (!isValidUtf8(document)) return std::nullopt;
    return document;
}

Text noteTextOfStoredData(std::string_view data, std::uint64_t most, std::uint64_t* unpacked) {
    if (!data.starts_with(kGzipMagic)) return std::nullopt;
    std::uint64_t total = 0;
    const auto document = unpack(data, std::min(most, kLargestNote), total);
    if (unpacked != nullptr) *unpacked += total;
    return document ? noteTextOfDocument(*document) : std::nullopt;
}

std::string plainTextOfHtml(std::string_view html) {
    constexpr std::string_view blank = "&nbsp;";
    // Behind the last ">" no tag ends, and looking for one at every "<" would take quadratic time.
    const char* const lastEnd = html.data() + (html.rfind('>') + 1);
    std::string text;
    while (!html.empty()) {
        const bool tag = html.front() == '<' && html.data() < lastEnd;
        const auto end = tag ? html.find('>') : std::string_view::npos;
        if (end != std::string_view::npos) {
            html.remove_prefix(end + 1);
        } else if (html.starts_with(blank)) {
            text += ' ';
            html.remove_prefix(blank.size());
        } else {
            text += html.front();
            html.remove_prefix(1);
        }
    }
    return text;
}

}  // namespace salvor
