#include "util/PropertyList.h"

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
    return isValidUtf8(text) ? Text(std::move(text)) : std::nullopt;
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
    if (plist_get_node_type(node) != PLIST_DICT) return {};
    return {std::move(tree), node};
}

void* PropertyList::item(const char* key) const {
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

PropertyList PropertyList::dictionary(const char* key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DICT) return {};
    return {tree_, node};
}

}  // namespace salvor
