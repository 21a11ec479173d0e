#include "carving/deep/TextTraits.h"

#include <cstring>

#include "util/Utf8.h"

namespace salvor::deep {
namespace {

constexpr std::uint32_t kBad = 0xFFFFFFFF;
constexpr std::uint32_t kLongestShape = 64;

std::uint32_t nextUtf8(Bytes text, std::size_t& at) {
    const std::uint8_t lead = text[at++];
    if (lead < 0x80) return lead;
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || text.size() - at < static_cast<std::size_t>(more))
        return kBad;
    std::uint32_t point = lead & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        const std::uint8_t byte = text[at++];
        if ((byte & 0xC0u) != 0x80) return kBad;
        point = point << 6 | (byte & 0x3Fu);
    }
    const bool overlong = (more == 2 && point < 0x800) || (more == 3 && point < 0x10000);
    const bool surrogate = point >= 0xD800 && point < 0xE000;
    return overlong || surrogate || point > 0x10FFFF ? kBad : point;
}

std::uint32_t nextUtf16(Bytes text, std::size_t& at, bool big) {
    const auto unit = [&]() -> std::uint32_t {
        if (text.size() - at < 2) return kBad;
        const std::uint32_t first = text[at];
        const std::uint32_t second = text[at + 1];
        at += 2;
        return big ? first << 8 | second : second << 8 | first;
    };
    const std::uint32_t first = unit();
    if (first == kBad) at = text.size();
    if (first == kBad || first < 0xD800 || first >= 0xE000) return first;
    if (first >= 0xDC00 || at >= text.size()) return kBad;
    const std::uint32_t second = unit();
    if (second < 0xDC00 || second >= 0xE000) return kBad;
    return 0x10000 + ((first - 0xD800) << 10 | (second - 0xDC00));
}

std::uint32_t nextPoint(Bytes text, std::size_t& at, TextEncoding encoding) {
    return encoding == TextEncoding::Utf8 ? nextUtf8(text, at)
                                          : nextUtf16(text, at, encoding == TextEncoding::Utf16Be);
}

std::uint8_t kindOf(std::uint32_t point) {
    if (point >= '0' && point <= '9') return kDigit;
    if (point >= 'A' && point <= 'Z') return point <= 'F' ? kCapitalHex : kCapital;
    if (point >= 'a' && point <= 'z') return point <= 'f' ? kSmallHex : kSmall;
    return point >= 0x80 ? kWide : 0;
}

void append(std::string& out, std::uint32_t point) {
    if (point < 0x80) {
        out += static_cast<char>(point);
        return;
    }
    const int more = point >= 0x10000 ? 3 : point >= 0x800 ? 2 : 1;
    constexpr std::uint32_t kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLeads[more] | point >> (6 * more));
    for (int i = more; i-- > 0;) out += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}

/// Whether the text is of printable ASCII throughout, told eight bytes at a time: what most are.
bool isPlain(Bytes text) {
    constexpr std::uint64_t kHighs = 0x8080808080808080;
    constexpr std::uint64_t kBlanks = 0x2020202020202020;
    std::size_t at = 0;
    for (std::uint64_t word = 0; text.size() - at >= 8; at += 8) {
        std::memcpy(&word, &text[at], 8);
        // Below 0x80, subtracting a blank sets the high bit of what is less than one.
        if ((word & kHighs) != 0 || (((word | kHighs) - kBlanks) & kHighs) != kHighs) return false;
    }
    for (; at < text.size(); ++at)
        if (text[at] < 0x20 || text[at] >= 0x80) return false;
    return true;
}

/// Takes the characters of a text for its shape, one after another.
class Shape {
  public:
    explicit Shape(TextTraits& traits) : traits_(traits) {}

    void add(std::uint32_t point) {
        if (point < 0x20 && point != '\t' && point != '\n' && point != '\r') traits_.control = true;
        if (traits_.characters++ >= kLongestShape) return;
        const std::uint8_t kind = kindOf(point);
        traits_.kinds |= kind;
        if (kind != 0) {
            ++run_;
        } else {
            mix(run_ << 32 | point);
            run_ = 0;
        }
    }
    void finish() {
        mix(run_ << 32);
        const bool shaped = traits_.characters != 0 && traits_.characters <= kLongestShape;
        traits_.skeleton = shaped ? skeleton_ : 0;
    }

  private:
    void mix(std::uint64_t what) {
        skeleton_ = (skeleton_ ^ what) * 0xFF51AFD7ED558CCD;
        skeleton_ ^= skeleton_ >> 32;
    }

    TextTraits& traits_;
    std::uint64_t skeleton_ = 0x9E3779B97F4A7C15;
    std::uint64_t run_ = 0;
};

}  // namespace

TextTraits textTraits(Bytes text, TextEncoding encoding, bool shaped) {
    TextTraits traits;
    const bool quick = !shaped || text.size() > kLongestShape;
    if (quick && encoding == TextEncoding::Utf8 && isPlain(text)) {
        traits.characters = static_cast<std::uint32_t>(text.size());
        traits.kinds = kDigit | kCapitalHex | kCapital | kSmallHex | kSmall;
        return traits;
    }
    Shape shape(traits);
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t point = nextPoint(text, at, encoding);
        if (point == kBad) {
            traits.valid = false;
            return traits;
        }
        shape.add(point);
    }
    shape.finish();
    return traits;
}

std::optional<std::string> toUtf8(Bytes text, TextEncoding encoding) {
    if (encoding == TextEncoding::Utf8) {
        if (!isValidUtf8(text)) return std::nullopt;
        return std::string(text.begin(), text.end());
    }
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t point = nextPoint(text, at, encoding);
        if (point == kBad) return std::nullopt;
        append(out, point);
    }
    return out;
}

}  // namespace salvor::deep
