#include "recovery/ColumnAttributes.h"

#include <gtest/gtest.h>
#include <limits>

namespace salvor {
namespace {

constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
constexpr auto kMin = std::numeric_limits<std::int64_t>::min();

TEST(ColumnAttributes, ConvertsBetweenKinds) {
    const struct {
        OptionalColumnValue value;
        Text text;
        std::int64_t integer;
    } cases[] = {
        {std::nullopt, std::nullopt, 0},
        {std::int64_t{-5}, "-5", -5},
        {std::string("12ab3"), "12ab3", 12},
        {std::string("ab"), "ab", 0},
        {std::string("99999999999999999999"), "99999999999999999999", kMax},
        {2.5, "2.5", 2},
        {-1e30, "-1e+30", kMin},
        {std::numeric_limits<double>::quiet_NaN(), "nan", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.value_or("absent"));
        EXPECT_EQ(columnText(c.value), c.text);
        EXPECT_EQ(columnInteger(c.value), c.integer);
    }
    EXPECT_EQ(columnDouble(2.5), 2.5);
    EXPECT_EQ(columnDouble(std::string("7x")), 7.0);
}

}  // namespace
}  // namespace salvor
