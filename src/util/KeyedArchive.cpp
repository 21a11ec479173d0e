#include "util/KeyedArchive.h"

#include <cmath>
#include <plist/plist.h>

#include "util/PropertyListGuard.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr std::int64_t kReferenceDate = 978307200;

plist_t itemOf(plist_t node, const char* key) {
    return node != nullptr && plist_get_node_type(node) == PLIST_DICT
               ? plist_dict_get_item(node, key)
               : nullptr;
}

bool isA(plist_t node, plist_type type) {
    return node != nullptr && plist_get_node_type(node) == type;
}

std::optional<std::int64_t> wholePart(double value) {
    constexpr double kLimit = 9e18;
    if (!(std::fabs(value) < kLimit)) return std::nullopt;
    return static_cast<std::int64_t>(std::floor(value));
}

std::optional<std::int64_t> secondsOf(plist_t date) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(date, &seconds, &microseconds);
    return std::int64_t{seconds} + kReferenceDate;
}

}  // namespace

KeyedArchive::Value KeyedArchive::parse(Bytes data) {
    // As long as no reference of the property list itself goes in a circle.
    if (data.empty() || data.size() > kMaxPropertyListBytes || !binaryPropertyListIsTame(data))
        return {};
    plist_t node = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(data.data()),
                   static_cast<std::uint32_t>(data.size()), &node);
    if (node == nullptr) return {};
    const std::shared_ptr<void> tree(node, plist_free);
    const plist_t objects = itemOf(node, "$objects");
    if (!isA(objects, PLIST_ARRAY)) return {};
    return Value(tree, objects, nullptr).resolved(itemOf(itemOf(node, "$top"), "root"));
}

KeyedArchive::Value KeyedArchive::Value::resolved(void* node) const {
    if (!isA(node, PLIST_UID)) return {tree_, objects_, node};
    std::uint64_t number = 0;
    plist_get_uid_val(node, &number);
    const bool exists = number < plist_array_get_size(objects_);
    const plist_t object =
        exists ? plist_array_get_item(objects_, static_cast<std::uint32_t>(number)) : nullptr;
    // A reference to a reference is nothing that an archiver writes.
    return isA(object, PLIST_UID) ? Value() : Value(tree_, objects_, object);
}

KeyedArchive::Value KeyedArchive::Value::at(const char* key) const {
    return resolved(itemOf(node_, key));
}

Text KeyedArchive::Value::text() const {
    const Value inner = isA(node_, PLIST_DICT) ? at("NS.string") : *this;
    if (!isA(inner.node_, PLIST_STRING)) return std::nullopt;
    std::uint64_t length = 0;
    const char* characters = plist_get_string_ptr(inner.node_, &length);
    if (characters == nullptr) return std::string();
    const std::string_view text(characters, static_cast<std::size_t>(length));
    // An archiver's way to write that there is no object.
    return isValidUtf8(text) && text != "$null" ? Text(text) : std::nullopt;
}

std::optional<std::string> KeyedArchive::Value::data() const {
    const Value inner = isA(node_, PLIST_DICT) ? at("NS.data") : *this;
    if (!isA(inner.node_, PLIST_DATA)) return std::nullopt;
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(inner.node_, &length);
    return bytes != nullptr ? std::string(bytes, static_cast<std::size_t>(length)) : std::string();
}

std::optional<std::int64_t> KeyedArchive::Value::integer() const {
    if (isA(node_, PLIST_UINT)) {
        std::uint64_t value = 0;
        plist_get_uint_val(node_, &value);
        return static_cast<std::int64_t>(value);
    }
    if (isA(node_, PLIST_DATE)) return secondsOf(node_);
    if (isA(node_, PLIST_DICT)) {
        // An archived date counts from 2001, whole or not.
        const auto seconds = at("NS.time");
        const auto whole = isA(seconds.node_, PLIST_DICT) ? std::nullopt : seconds.integer();
        constexpr std::int64_t kLimit = std::int64_t{1} << 62;
        if (!whole || *whole > kLimit) return std::nullopt;
        return *whole + kReferenceDate;
    }
    if (!isA(node_, PLIST_REAL)) return std::nullopt;
    double value = 0;
    plist_get_real_val(node_, &value);
    return wholePart(value);
}

}  // namespace salvor
