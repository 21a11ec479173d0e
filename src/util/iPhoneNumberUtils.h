#pragma once

#include <string>

#include "util/StringUtils.h"
#include "util/Text.h"

namespace salvor {

/// Tests and comparison of phone numbers as people and devices write them. An absent number
/// equals nothing.
struct iPhoneNumberUtils {
    static bool StartWithPlusSign(const Text& text);
    /// Only digits, "+", "-" and white space; an empty text counts, an absent one does not.
    static bool IsPhoneNumber(const Text& text);
    /// The longer number ends with the shorter one, both without spaces, "(0)" and one leading
    /// "0"; a first number of fewer than four characters must be equal as it stands. An empty
    /// second number ends nothing, so a contact without a number is never a match.
    static bool AreEqual(const Text& number1, const Text& number2);

    /// A phone-number object equals the text that its `GooglePhoneNumber` (of an object that
    /// `IsPhoneNumber` and has one) or else its `PhoneNumber` holds.
    template <class Phone>
    requires requires(const Phone& p) { p.GooglePhoneNumber; }
    static bool AreEqual(const Phone& phone, const Text& stringPhone) {
        const bool normalised = phone.IsPhoneNumber && phone.GooglePhoneNumber;
        return StringUtils::sameText(normalised ? phone.GooglePhoneNumber : phone.PhoneNumber,
                                     stringPhone);
    }
};

}  // namespace salvor
