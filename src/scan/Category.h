#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>

namespace salvor {

/// A category of personal data. The number is its code in a scan request; `Categories.h` tells
/// everything else.
enum class Category : std::int32_t {
    Messages = 1,
    Photos = 2,  ///< and videos
    Contacts = 3,
    Calls = 4,
    WhatsApp = 5,
    Notes = 6,
    Internet = 7,
    Calendar = 8,
};
inline constexpr Category kLastCategory = Category::Calendar;
inline constexpr auto kCategoryCount = static_cast<std::size_t>(kLastCategory);

/// People may type the codes up to this one; later categories go by their word alone.
inline constexpr std::int32_t kLastTypedCode = 8;

/// In a scan request: all categories.
inline constexpr std::int32_t kEverything = 0;

constexpr std::int32_t codeOf(Category category) {
    return static_cast<std::int32_t>(category);
}

/// From 0.
constexpr std::size_t indexOf(Category category) {
    return static_cast<std::size_t>(category) - 1;
}

/// The services of a scan under the numbers by which the recovery driver asks for them.
enum class ServiceIndex : int {
    Messages = 0,
    CameraRoll = 1,
    Contacts = 2,
    CallHistory = 3,
    Calendars = 4,
    Notes = 5,
    InternetHistory = 6,
    WhatsApp = 7,
};

/// One value for each category, for what only a higher box can know of it. Does not compile when a
/// category has none, or two.
template <class Value>
class PerCategory {
  public:
    struct Entry {
        Category category;
        Value value;
    };

    consteval PerCategory(std::initializer_list<Entry> entries) {
        std::array<bool, kCategoryCount> given{};
        for (const Entry& entry : entries) {
            if (given.at(indexOf(entry.category)))
                throw std::logic_error("a category has two values");
            given.at(indexOf(entry.category)) = true;
            values_.at(indexOf(entry.category)) = entry.value;
        }
        if (entries.size() != kCategoryCount) throw std::logic_error("a category has no value");
    }

    constexpr const Value& operator[](Category category) const {
        return values_.at(indexOf(category));
    }

  private:
    std::array<Value, kCategoryCount> values_{};
};

}  // namespace salvor
