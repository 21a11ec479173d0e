#include "device/BackupHelper.h"

#include <map>
#include <sstream>

#include "device/HelperWords.h"
#include "util/StringUtils.h"

namespace salvor {

std::optional<BackupHelper> BackupHelper::parse(const std::string& text) {
    BackupHelper helper;
    helper.words.clear();
    std::istringstream words(text);
    for (std::string word; words >> word;) helper.words.push_back(word);
    return helper.words.empty() ? std::nullopt : std::optional(std::move(helper));
}

std::vector<std::string> BackupHelper::wordsFor(const std::string& udid,
                                                const std::filesystem::path& folder) const {
    const std::map<std::string, std::string> values{{"{udid}", udid},
                                                    {"{target}", StringUtils::lowerCase(udid)},
                                                    {"{folder}", folder.string()}};
    std::vector<std::string> result;
    for (const auto& word : words) {
        const auto value = values.find(word);
        result.push_back(value == values.end() ? word : value->second);
    }
    return result;
}

bool wasRefused(const HelperResult& result) {
    constexpr int kDeviceLocked = 208;
    constexpr int kStatuses = 256;
    if (!result.exitStatus || *result.exitStatus == 0) return false;
    return *result.exitStatus == 1 || *result.exitStatus == kStatuses - kDeviceLocked ||
           tellsLock(result.usefulLine);
}

}  // namespace salvor
