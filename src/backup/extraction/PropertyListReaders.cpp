#include "backup/extraction/PropertyListReaders.h"

#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

namespace salvor {
namespace {

template <class Row>
void append(List<Row>& list, Row row) {
    row.SlNo = static_cast<std::int32_t>(list.size()) + 1;
    list.push_back(std::make_shared<Row>(std::move(row)));
}

/// What stands under the first of `keys` that holds a text or number.
Text firstOf(const PropertyList& entry, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (auto value = entry.scalar(key)) return value;
    }
    return std::nullopt;
}

/// A manifest tells no name but the path, "/var/mobile/Applications/.../Name.app".
Text applicationName(const PropertyList& entry) {
    auto name = firstOf(entry, {"CFBundleDisplayName", "CFBundleName", "CFBundleExecutable"});
    if (name) return name;
    const std::string path = entry.text("Path").value_or("");
    std::string_view last = std::string_view(path).substr(path.rfind('/') + 1);
    if (last.ends_with(".app")) last.remove_suffix(4);
    return last.empty() ? std::nullopt : Text(last);
}

void appendApplications(List<Application>& list, const std::vector<PropertyList>& entries) {
    for (const PropertyList& entry : entries) {
        const Text identifier = entry.text("CFBundleIdentifier");
        if (!identifier) continue;
        append(list, {0, applicationName(entry), identifier,
                      firstOf(entry, {"CFBundleVersion", "CFBundleShortVersionString"})});
    }
}

}  // namespace

List<Account> accountsOf(const PropertyList& settings) {
    List<Account> list;
    for (const PropertyList& entry : settings.dictionaries("Accounts")) {
        Account row{0, entry.scalar("Username"), entry.scalar("PortNumber"), entry.scalar("Class"),
                    entry.scalar("Hostname")};
        if (row.Username || row.PortNumber || row.ClassName || row.Hostname)
            append(list, std::move(row));
    }
    return list;
}

List<Application> applicationsOf(const PropertyList& installed) {
    List<Application> list;
    for (const char* group : {"User", "System", "Applications"}) {
        appendApplications(list, installed.dictionaries(group));
    }
    appendApplications(list, installed.dictionaries());
    return list;
}

List<MapHistory> mapHistoryOf(const PropertyList& history) {
    List<MapHistory> list;
    for (const PropertyList& entry : history.dictionaries("HistoryItems")) {
        MapHistory row{0, firstOf(entry, {"Query", "DisplayQuery"}), entry.scalar("Location"),
                       entry.scalar("Latitude"), entry.scalar("Longitude")};
        if (row.Query || row.Location || row.Latitude || row.Longitude)
            append(list, std::move(row));
    }
    return list;
}

}  // namespace salvor
