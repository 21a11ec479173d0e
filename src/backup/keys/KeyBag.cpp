#include "backup/keys/KeyBag.h"

#include <algorithm>
#include <string_view>

namespace salvor {
namespace {

constexpr std::size_t kItemHead = 8;
/// There are eleven; more than this many are no key bag's.
constexpr std::size_t kMostClasses = 64;

std::uint32_t number(Bytes bytes) {
    std::uint32_t value = 0;
    if (bytes.size() != 4) return 0;
    for (const std::uint8_t byte : bytes) value = (value << 8) | byte;
    return value;
}

std::string text(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

void readBagItem(KeyBag& bag, std::string_view tag, Bytes value) {
    if (tag == "SALT") bag.salt = text(value);
    if (tag == "ITER") bag.iterations = number(value);
    if (tag == "DPSL") bag.firstSalt = text(value);
    if (tag == "DPIC") bag.firstIterations = number(value);
}

void readClassItem(WrappedClassKey& key, std::string_view tag, Bytes value) {
    if (tag == "CLAS") key.protectionClass = number(value);
    if (tag == "WRAP") key.wrap = number(value);
    if (tag == "WPKY") key.key = text(value);
}

}  // namespace

std::optional<KeyBag> KeyBag::parse(Bytes data) {
    KeyBag bag;
    bool inClasses = false;
    bool begun = false;
    while (data.size() >= kItemHead) {
        const std::string tag = text(data.first(4));
        const std::uint32_t length = number(data.subspan(4, 4));
        data = data.subspan(kItemHead);
        if (length > data.size()) break;
        const Bytes value = data.first(length);
        data = data.subspan(length);
        if (tag == "UUID") {
            // The first one names the bag itself.
            inClasses = begun;
            begun = true;
            if (inClasses && bag.classes.size() == kMostClasses) break;
            if (inClasses) bag.classes.emplace_back();
        } else if (inClasses) {
            readClassItem(bag.classes.back(), tag, value);
        } else {
            readBagItem(bag, tag, value);
        }
    }
    const bool opens = std::any_of(bag.classes.begin(), bag.classes.end(), [](const auto& key) {
        return key.byPassword() && !key.key.empty();
    });
    if (!opens || bag.salt.empty() || bag.iterations == 0) return std::nullopt;
    return bag;
}

}  // namespace salvor
