#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "records/CallLog.h"
#include "records/Contact.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

class RecordContext;

/// One call row. `Duration` is in seconds, `Flags` the call type code of the database.
struct CallHistory : baseRecoveryObject {
    bool isChecked = false;
    std::int64_t ContactRowId = 0;
    std::shared_ptr<Contact> contact;
    salvor::Text Address;
    salvor::Text Date;
    double OriginalDate = 0;
    std::int64_t Duration = 0;
    std::int32_t Flags = 0;
    bool Read = false;
    std::int64_t ZFaceTimeData = 0;
    bool ZOriginated = false;
    salvor::Text MobileCountryCode;
    salvor::Text MobileNetworkCode;
    salvor::Text FaceTimeDataUrl;

    /// The number slots of a contact by which callers are named.
    static constexpr std::array searchedNumbers{&Contact::ContactNo1, &Contact::ContactNo2,
                                                &Contact::ContactNo3};

    std::shared_ptr<CallLog> generateCallLogObject(const RecordContext& context) const;
    /// The same for a caller whose name is known already.
    std::shared_ptr<CallLog> generateCallLogObject(const RecordContext& context,
                                                   const salvor::Text& contactName) const;
    std::string convertCallTypeFlagtoCallTypeString() const;
    std::string convertCallTypeFlagtoCallModeString() const;
    /// The full name of the matched contact, "" without one.
    salvor::Text Fullname() const;
    /// The name of the contact one of whose first three numbers equals `number`, live contacts
    /// before carved ones; "" without a hit. `ContactNames` answers the same for many numbers.
    static salvor::Text getContactNamefromNumber(const salvor::Text& number,
                                                 const RecordContext& context);
    /// Nickname, else first name, else last name; never a combination.
    static salvor::Text getContactName(const Contact& contact);
    /// `number` with a no-break space at index 5 when it has six characters or more.
    static std::string splittedTelNumber(std::string_view number);
    /// Equal `Address` and `Date`.
    bool IsEqual(const CallHistory& other) const;

    template <class Self = CallHistory>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(
                field("isChecked", &Self::isChecked), field("ContactRowId", &Self::ContactRowId),
                field("contact", &Self::contact), field("Address", &Self::Address),
                field("Date", &Self::Date), field("OriginalDate", &Self::OriginalDate),
                field("Duration", &Self::Duration), field("Flags", &Self::Flags),
                field("Read", &Self::Read), field("ZFaceTimeData", &Self::ZFaceTimeData),
                field("ZOriginated", &Self::ZOriginated),
                field("MobileCountryCode", &Self::MobileCountryCode),
                field("MobileNetworkCode", &Self::MobileNetworkCode),
                field("FaceTimeDataUrl", &Self::FaceTimeDataUrl)));
    }
};

}  // namespace salvor
