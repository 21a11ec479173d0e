#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// Base of the contact details: the identifier and label of a multi-value.
struct baseContactData {
    std::int64_t identifier = 0;
    salvor::Text Label;

    template <class Self = baseContactData>
    static constexpr auto fields() {
        return std::make_tuple(field("identifier", &Self::identifier),
                               field("Label", &Self::Label));
    }
};

/// A phone number of a contact.
struct ContactNumber : baseContactData {
    salvor::Text Number;

    template <class Self = ContactNumber>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseContactData::fields(),
                              std::make_tuple(field("Number", &Self::Number)));
    }
};

/// An e-mail address of a contact.
struct ContactEmailAddress : baseContactData {
    salvor::Text Email;

    template <class Self = ContactEmailAddress>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseContactData::fields(),
                              std::make_tuple(field("Email", &Self::Email)));
    }
};

/// A home page of a contact.
struct ContactHomePage : baseContactData {
    salvor::Text HomePageUrl;

    template <class Self = ContactHomePage>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseContactData::fields(),
                              std::make_tuple(field("HomePageUrl", &Self::HomePageUrl)));
    }
};

/// A postal or instant-messaging address of a contact.
struct ContactAddress : baseContactData {
    salvor::Text Country;
    salvor::Text Street;
    salvor::Text Postcode;
    salvor::Text City;
    salvor::Text CountryShort;
    salvor::Text StateOrCounty;
    salvor::Text ImUsername;
    salvor::Text ImType;
    salvor::Text ImFullName;
    salvor::Text ImProfileUrl;

    template <class Self = ContactAddress>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseContactData::fields(),
            std::make_tuple(field("Country", &Self::Country), field("Street", &Self::Street),
                            field("Postcode", &Self::Postcode), field("City", &Self::City),
                            field("CountryShort", &Self::CountryShort),
                            field("StateOrCounty", &Self::StateOrCounty),
                            field("ImUsername", &Self::ImUsername), field("ImType", &Self::ImType),
                            field("ImFullName", &Self::ImFullName),
                            field("ImProfileUrl", &Self::ImProfileUrl)));
    }
};

}  // namespace salvor
