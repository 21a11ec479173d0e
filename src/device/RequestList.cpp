#include "device/RequestList.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>

namespace salvor {
namespace {

plist_t nodeOf(const std::variant<std::string, std::uint64_t>& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return plist_new_string(text->c_str());
    return plist_new_uint(std::get<std::uint64_t>(value));
}

}  // namespace

std::vector<std::uint8_t> requestBytes(const RequestValues& values, std::size_t head) {
    const std::unique_ptr<void, decltype(&plist_free)> list(plist_new_dict(), &plist_free);
    for (const auto& [key, value] : values) plist_dict_set_item(list.get(), key, nodeOf(value));
    char* xml = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(list.get(), &xml, &size);
    const std::unique_ptr<char, decltype(&std::free)> owned(xml, &std::free);
    std::vector<std::uint8_t> bytes(head + size);
    std::copy_n(xml, size, bytes.begin() + static_cast<std::ptrdiff_t>(head));
    return bytes;
}

}  // namespace salvor
