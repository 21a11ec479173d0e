#include "device/HelperWords.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>

#include "util/StringUtils.h"

namespace salvor {
namespace {

struct Words {
    const char* part;  ///< of the line in lower case
    int weight;
};

/// The first that fits counts.
constexpr Words kFailures[] = {
    {"errorcode ", 3},          // what the device itself says, with its words
    {"failed (error code", 1},  // the same number once more
    {"aborted.", 1},
    {"error", 2},
    {"fail", 2},
    {"could not", 2},
    {"cannot", 2},
    {"can't", 2},
    {"unable", 2},
    {"denied", 2},
    {"refused", 2},
    {"locked", 2},
    {"cancelled", 2},
    {"no space", 2},
    {"not found", 2},
    {"no device", 2},
};

constexpr const char* kLocks[] = {"device locked",
                                  "mberrordomain/208",
                                  "errorcode 208",
                                  "password protected",
                                  "passwordprotected",
                                  "passcode is set",
                                  "lockdownd, error code -17"};

bool holds(const std::string& line, const char* part) {
    return line.find(part) != std::string::npos;
}

}  // namespace

int tellsFailure(std::string_view line) {
    const std::string lower = StringUtils::lowerCase(std::string(line));
    const auto* found =
        std::find_if(std::begin(kFailures), std::end(kFailures),
                     [&lower](const Words& words) { return holds(lower, words.part); });
    return found == std::end(kFailures) ? 0 : found->weight;
}

bool tellsLock(std::string_view line) {
    const std::string lower = StringUtils::lowerCase(std::string(line));
    return std::any_of(std::begin(kLocks), std::end(kLocks),
                       [&lower](const char* part) { return holds(lower, part); });
}

int percentIn(std::string_view line) {
    const auto end = line.rfind('%');
    if (end == std::string_view::npos) return -1;
    std::string_view digits = line.substr(0, end);
    digits.remove_prefix(digits.find_last_not_of("0123456789") + 1);  // npos + 1 is 0
    if (digits.empty()) return -1;
    int value = 100;  // as it stays when the digits are too many
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return std::min(value, 100);
}

}  // namespace salvor
