#include "backup/extraction/DeviceLists.h"

#include "backup/extraction/KeyboardDictionary.h"
#include "backup/extraction/PropertyListReaders.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

PropertyList propertyList(const ScanState& state, const std::string& storedName) {
    const auto file = state.backupFiles()->open(storedName);
    return file ? PropertyList::read(file.path) : PropertyList();
}

List<Application> applications(const ScanState& state) {
    auto list = applicationsOf(propertyList(state, state.APPLICATIONS_DATABASE));
    if (!list.empty()) return list;
    const auto manifest = state.backupFiles()->own("Manifest.plist");
    return manifest ? applicationsOf(PropertyList::read(manifest.path)) : List<Application>();
}

List<UserDict> keyboardWords(const ScanState& state) {
    const auto file = state.backupFiles()->open(state.DYNAMICDIT_DATABASE);
    const auto mapped = file ? MappedFile::open(file.path) : std::nullopt;
    return mapped ? keyboardWordsOf(mapped->bytes()) : List<UserDict>();
}

}  // namespace

void clearDeviceLists(ScanState& state) {
    state.AccountContent.clear();
    state.ApplicationContent.clear();
    state.MapContent.clear();
    state.UserDictContent.clear();
}

void readDeviceLists(ScanState& state, const std::stop_token& cancelled) {
    if (cancelled.stop_requested()) return;
    state.AccountContent = accountsOf(propertyList(state, state.ACCOUNT_DATABASE));
    state.ApplicationContent = applications(state);
    state.MapContent = mapHistoryOf(propertyList(state, state.MAPHISTORY_DATABASE));
    if (cancelled.stop_requested()) return;
    state.UserDictContent = keyboardWords(state);
}

}  // namespace salvor
