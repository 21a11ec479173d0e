#include "util/PropertyList.h"

#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <plist/plist.h>
#include <string_view>

#include "util/MappedFile.h"
#include "util/PropertyListGuard.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr std::string_view kBinaryMagic = "bplist00";

plist_t parseBinary(Bytes data) {
    if (!binaryPropertyListIsTame(data)) return nullptr;
    plist_t node = nullptr;
    // Bytes and characters share their representation.
    plist_from_bin(reinterpret_cast<const char*>(data.data()),
                   static_cast<std::uint32_t>(data.size()), &node);
    return node;
}

plist_t parseXml(Bytes data) {
    const auto xml = tameXmlPropertyList(data);
    if (!xml) return nullptr;
    plist_t node = nullptr;
    plist_from_xml(xml->data(), static_cast<std::uint32_t>(xml->size()), &node);
    return node;
}

bool isBinary(Bytes data) {
    const Bytes start = slice(data, 0, kBinaryMagic.size());
    return std::string_view(reinterpret_cast<const char*>(start.data()), start.size()) ==
           kBinaryMagic;
}

bool textMeansYes(const Text& text) {
    return text && !text->empty() &&
           std::string_view("YyTt123456789").find(text->front()) != std::string_view::npos;
}

Text textOf(plist_t node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
    std::uint64_t length = 0;
    const char* characters = plist_get_string_ptr(node, &length);
    if (characters == nullptr) return std::string();
    std::string text(characters, static_cast<std::size_t>(length));
    return isValidUtf8(text) ? Text(text) : std::nullopt;
}

Text decimal(plist_t node) {
    if (plist_get_node_type(node) == PLIST_UINT) {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return std::to_string(static_cast<std::int64_t>(value));
    }
    if (plist_get_node_type(node) != PLIST_REAL) return std::nullopt;
    double value = 0;
    plist_get_real_val(node, &value);
    return std::isfinite(value) ? Text(fmt::format("{}", value)) : std::nullopt;
}

/// Calls `visit` with every value of an array or dictionary.
template <class Visit>
void forEachValue(plist_t container, Visit visit) {
    const bool isArray = plist_get_node_type(container) == PLIST_ARRAY;
    void* iterator = nullptr;
    isArray ? plist_array_new_iter(container, &iterator)
            : plist_dict_new_iter(container, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> owned(iterator, &std::free);
    if (iterator == nullptr) return;
    for (plist_t value = nullptr;;) {
        isArray ? plist_array_next_item(container, iterator, &value)
                : plist_dict_next_item(container, iterator, nullptr, &value);
        if (value == nullptr) return;
        visit(value);
    }
}

bool isContainer(plist_t node) {
    const auto type = plist_get_node_type(node);
    return type == PLIST_DICT || type == PLIST_ARRAY;
}

}  // namespace

PropertyList PropertyList::read(const std::filesystem::path& file) {
    const auto mapped = MappedFile::open(file);
    return mapped ? parse(mapped->bytes()) : PropertyList();
}

PropertyList PropertyList::parse(Bytes data) {
    if (data.empty() || data.size() > kMaxPropertyListBytes) return {};
    plist_t node = isBinary(data) ? parseBinary(data) : parseXml(data);
    if (node == nullptr) return {};
    std::shared_ptr<void> tree(node, plist_free);
    if (!isContainer(node)) return {};
    return {std::move(tree), node};
}

void* PropertyList::item(const char* key) const {
    // The library answers a question for a key of an array with nothing.
    return node_ == nullptr ? nullptr : plist_dict_get_item(node_, key);
}

bool PropertyList::has(const char* key) const {
    return item(key) != nullptr;
}

Text PropertyList::text(const char* key) const {
    return textOf(item(key));
}

std::optional<std::string> PropertyList::data(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DATA) return std::nullopt;
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes != nullptr ? std::string(bytes, static_cast<std::size_t>(length)) : std::string();
}

std::optional<bool> PropertyList::boolean(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr) return std::nullopt;
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN:
            return plist_bool_val_is_true(node) != 0;
        case PLIST_UINT:
            return plist_uint_val_compare(node, 0) != 0;
        case PLIST_REAL:
            return plist_real_val_compare(node, 0.0) != 0;
        case PLIST_STRING:
            return textMeansYes(textOf(node));
        default:
            return false;
    }
}

std::optional<std::int64_t> PropertyList::integer(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_UINT) return std::nullopt;
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<std::int64_t>(value);
}

std::optional<std::int64_t> PropertyList::date(const char* key) const {
    constexpr std::int64_t kUnixSecondsOf2001 = 978307200;
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DATE) return std::nullopt;
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return seconds + kUnixSecondsOf2001;
}

Text PropertyList::scalar(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr) return std::nullopt;
    return plist_get_node_type(node) == PLIST_STRING ? textOf(node) : decimal(node);
}

PropertyList PropertyList::dictionary(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DICT) return {};
    return {tree_, node};
}

std::vector<PropertyList> PropertyList::dictionaries() const {
    return dictionariesOf(node_);
}

std::vector<PropertyList> PropertyList::dictionaries(const char* key) const {
    return dictionariesOf(item(key));
}

std::vector<PropertyList> PropertyList::dictionariesOf(void* container) const {
    std::vector<PropertyList> found;
    if (container == nullptr || !isContainer(container)) return found;
    forEachValue(container, [&](plist_t value) {
        if (plist_get_node_type(value) == PLIST_DICT) found.push_back({tree_, value});
    });
    return found;
}

}  // namespace salvor
