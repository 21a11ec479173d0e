#pragma once

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// A phone number with its normalised form.
struct ContactPhoneNumber {
    salvor::Text Country;
    salvor::Text PhoneNumber;
    salvor::Text GooglePhoneNumber;
    bool IsPhoneNumber = false;

    static constexpr auto fields() {
        return std::make_tuple(field("Country", &ContactPhoneNumber::Country),
                               field("PhoneNumber", &ContactPhoneNumber::PhoneNumber),
                               field("GooglePhoneNumber", &ContactPhoneNumber::GooglePhoneNumber),
                               field("IsPhoneNumber", &ContactPhoneNumber::IsPhoneNumber));
    }
};

}  // namespace salvor
