// Property lists, XML and binary, and what their readers make of them.
#include <array>

#include "backup/extraction/PropertyListReaders.h"
#include "fuzz/Target.h"
#include "util/PropertyList.h"
#include "util/PropertyListGuard.h"
#include "util/Utf8.h"

using namespace salvor;

namespace {

constexpr std::array kKeys = {"Device Name",
                              "Product Version",
                              "IsEncrypted",
                              "Lockdown",
                              "Applications",
                              "ProductVersion",
                              "Date",
                              "key",
                              "HostID",
                              "a",
                              ""};

void look(const PropertyList& list) {
    for (const char* key : kKeys) {
        const Text text = list.text(key);
        const auto data = list.data(key);
        const auto integer = list.integer(key);
        fuzz::expect(!text || isValidUtf8(*text), "texts are UTF-8");
        fuzz::expect(text.has_value() + data.has_value() + integer.has_value() <= 1,
                     "a value has one type");
        fuzz::expect(!text || list.scalar(key) == text, "a text is a scalar");
        const bool any = text || data || integer || list.boolean(key);
        fuzz::expect(!any || list.has(key), "a value without a key");
        list.dictionaries(key);
    }
}

template <class Row>
void expectNumbered(const List<Row>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        fuzz::expect(rows[i]->SlNo == static_cast<std::int32_t>(i) + 1, "rows count from 1");
}

}  // namespace

SALVOR_FUZZ_TARGET(property_list) {
    const PropertyList list = PropertyList::parse(input);
    look(list);
    for (const char* key : kKeys) look(list.dictionary(key));
    for (const auto& one : list.dictionaries()) look(one);
    expectNumbered(accountsOf(list));
    expectNumbered(applicationsOf(list));
    expectNumbered(mapHistoryOf(list));

    const auto tame = tameXmlPropertyList(input);
    if (!tame) return;
    fuzz::expect(tame->size() <= input.size(), "taming only takes away");
    const Bytes again{reinterpret_cast<const std::uint8_t*>(tame->data()), tame->size()};
    fuzz::expect(tameXmlPropertyList(again) == tame, "what is tame stays as it is");
}
