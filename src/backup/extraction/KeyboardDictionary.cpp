#include "backup/extraction/KeyboardDictionary.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr std::string_view kHeader = "DynamicDictionary";
constexpr std::size_t kShortestWord = 2;  // a byte alone is a count
constexpr std::size_t kLongestWord = 255;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;
constexpr std::size_t kMostWords = 1'000'000;

bool endsWord(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

bool isWord(std::string_view run) {
    return run.size() >= kShortestWord && run.size() <= kLongestWord && isValidUtf8(run);
}

}  // namespace

List<UserDict> keyboardWordsOf(Bytes dictionary) {
    const Bytes read = slice(dictionary, 0, kMostBytes);
    std::string_view rest(reinterpret_cast<const char*>(read.data()), read.size());
    List<UserDict> words;
    if (!rest.starts_with(kHeader)) return words;
    rest.remove_prefix(
        std::min(rest.find_first_not_of("-0123456789", kHeader.size()), rest.size()));
    while (!rest.empty() && words.size() < kMostWords) {
        const auto end = std::find_if(rest.begin(), rest.end(), endsWord);
        const auto run = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        if (isWord(run)) {
            words.push_back(std::make_shared<UserDict>(
                UserDict{static_cast<std::int32_t>(words.size()) + 1, std::string(run)}));
        }
        rest.remove_prefix(std::min(run.size() + 1, rest.size()));
    }
    return words;
}

}  // namespace salvor
