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

    template <class Self = ContactPhoneNumber>
    static constexpr auto fields() {
        return std::make_tuple(field("Country", &Self::Country),
                               field("PhoneNumber", &Self::PhoneNumber),
                               field("GooglePhoneNumber", &Self::GooglePhoneNumber),
                               field("IsPhoneNumber", &Self::IsPhoneNumber));
    }
};

}  // namespace salvor
