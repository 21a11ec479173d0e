// Property lists, XML and binary, as backups and Apple's services write them.
#include <array>

#include "fuzz/Target.h"
#include "util/PropertyList.h"
#include "util/PropertyListGuard.h"
#include "util/Utf8.h"

using namespace salvor;

namespace {

constexpr std::array kKeys = {"Device Name",    "Product Version", "IsEncrypted", "Lockdown",
                              "ProductVersion", "Display Name",    "Date",        "key",
                              "PairRecord",     "HostID",          "a",           ""};

void look(const PropertyList& list) {
    for (const char* key : kKeys) {
        const Text text = list.text(key);
        const auto data = list.data(key);
        fuzz::expect(!text || isValidUtf8(*text), "texts are UTF-8");
        fuzz::expect(!text || !data, "a value has one type");
        const bool any = text || data || list.boolean(key);
        fuzz::expect(!any || list.has(key), "a value without a key");
    }
}

}  // namespace

SALVOR_FUZZ_TARGET(property_list) {
    PropertyList list = PropertyList::parse(input);
    look(list);
    for (const char* key : kKeys) look(list.dictionary(key));

    const auto tame = tameXmlPropertyList(input);
    if (!tame) return;
    fuzz::expect(tame->size() <= input.size(), "taming only takes away");
    const Bytes again{reinterpret_cast<const std::uint8_t*>(tame->data()), tame->size()};
    fuzz::expect(tameXmlPropertyList(again) == tame, "what is tame stays as it is");
}
