#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// Base of the contact details: the identifier and label of a multi-value.
struct baseContactData {
    std::int64_t identifier = 0;
    salvor::Text Label;

    static constexpr auto fields() {
        return std::make_tuple(field("identifier", &baseContactData::identifier),
                               field("Label", &baseContactData::Label));
    }
};

/// A phone number of a contact.
struct ContactNumber : baseContactData {
    salvor::Text Number;

    static constexpr auto fields() {
        return std::tuple_cat(baseContactData::fields(),
                              std::make_tuple(field("Number", &ContactNumber::Number)));
    }
};

/// An e-mail address of a contact.
struct ContactEmailAddress : baseContactData {
    salvor::Text Email;

    static constexpr auto fields() {
        return std::tuple_cat(baseContactData::fields(),
                              std::make_tuple(field("Email", &ContactEmailAddress::Email)));
    }
};

/// A home page of a contact.
struct ContactHomePage : baseContactData {
    salvor::Text HomePageUrl;

    static constexpr auto fields() {
        return std::tuple_cat(baseContactData::fields(),
                              std::make_tuple(field("HomePageUrl", &ContactHomePage::HomePageUrl)));
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

    static constexpr auto fields() {
        return std::tuple_cat(
            baseContactData::fields(),
            std::make_tuple(field("Country", &ContactAddress::Country),
                            field("Street", &ContactAddress::Street),
                            field("Postcode", &ContactAddress::Postcode),
                            field("City", &ContactAddress::City),
                            field("CountryShort", &ContactAddress::CountryShort),
                            field("StateOrCounty", &ContactAddress::StateOrCounty),
                            field("ImUsername", &ContactAddress::ImUsername),
                            field("ImType", &ContactAddress::ImType),
                            field("ImFullName", &ContactAddress::ImFullName),
                            field("ImProfileUrl", &ContactAddress::ImProfileUrl)));
    }
};

}  // namespace salvor
