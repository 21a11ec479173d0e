#pragma once

#include <cstdint>

#include "util/Text.h"

namespace salvor {

/// What a multi-value of the address book holds.
enum class ContactProperty : std::int64_t {
    Phone = 3,
    Email = 4,
    Address = 5,
    InstantMessage = 13,
    HomePage = 22,
};

/// One multi-value of a person.
struct ContactValue {
    std::int64_t uid = 0;
    std::int64_t recordId = 0;
    std::int64_t property = 0;
    std::int64_t identifier = 0;
    std::int64_t label = 0;
    salvor::Text value;
};

}  // namespace salvor
