#include "tools/sample/PropertyList.h"

#include <cstdlib>
#include <plist/plist.h>
#include <utility>

#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using Writer = void (*)(plist_t, char**, std::uint32_t*);

std::string written(Writer writer, plist_t root) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    writer(root, &bytes, &length);
    const std::unique_ptr<char, decltype(&std::free)> owned(bytes, &std::free);
    return {bytes, length};
}

void toXml(plist_t root, char** bytes, std::uint32_t* length) {
    plist_to_xml(root, bytes, length);
}
void toBinary(plist_t root, char** bytes, std::uint32_t* length) {
    plist_to_bin(root, bytes, length);
}

}  // namespace

PropertyListDictionary::PropertyListDictionary() : root_(plist_new_dict()) {}

PropertyListDictionary::PropertyListDictionary(PropertyListDictionary&& other) noexcept
    : root_(std::exchange(other.root_, nullptr)) {}

PropertyListDictionary::~PropertyListDictionary() {
    if (root_ != nullptr) plist_free(root_);
}

PropertyListDictionary& PropertyListDictionary::set(const std::string& key, void* node) {
    plist_dict_set_item(root_, key.c_str(), node);
    return *this;
}

PropertyListDictionary& PropertyListDictionary::text(const std::string& key,
                                                     const std::string& value) {
    return set(key, plist_new_string(value.c_str()));
}

PropertyListDictionary& PropertyListDictionary::boolean(const std::string& key, bool value) {
    return set(key, plist_new_bool(value ? 1 : 0));
}

PropertyListDictionary& PropertyListDictionary::integer(const std::string& key,
                                                        std::uint64_t value) {
    return set(key, plist_new_uint(value));
}

PropertyListDictionary& PropertyListDictionary::date(const std::string& key,
                                                     std::int64_t unixSeconds) {
    // The library counts from 2001.
    return set(key, plist_new_date(static_cast<std::int32_t>(unixSeconds - 978307200), 0));
}

PropertyListDictionary& PropertyListDictionary::data(const std::string& key,
                                                     std::string_view bytes) {
    return set(key, plist_new_data(bytes.data(), bytes.size()));
}

PropertyListDictionary& PropertyListDictionary::dictionary(const std::string& key,
                                                           PropertyListDictionary value) {
    return set(key, std::exchange(value.root_, nullptr));
}

PropertyListDictionary& PropertyListDictionary::real(const std::string& key, double value) {
    return set(key, plist_new_real(value));
}

PropertyListDictionary& PropertyListDictionary::array(const std::string& key,
                                                      std::vector<PropertyListDictionary> values) {
    const plist_t array = plist_new_array();
    for (auto& value : values) {
        plist_array_append_item(array, std::exchange(value.root_, nullptr));
    }
    return set(key, array);
}

PropertyListDictionary& PropertyListDictionary::emptyArray(const std::string& key) {
    return set(key, plist_new_array());
}

std::string PropertyListDictionary::xml() const {
    return written(&toXml, root_);
}

void PropertyListDictionary::writeXml(const std::filesystem::path& file) const {
    writeWholeFile(file, xml());
}

void PropertyListDictionary::writeBinary(const std::filesystem::path& file) const {
    writeWholeFile(file, written(&toBinary, root_));
}

}  // namespace salvor
