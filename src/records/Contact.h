#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/List.h"
#include "records/baseContactData.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

/// One person of the address book, live or carved.
struct Contact : baseRecoveryObject {
    std::int64_t handleId = 0;
    std::int32_t SlNo = 0;
    std::int32_t isChecked = 0;
    salvor::Text Guid;
    salvor::Text Title;
    salvor::Text FirstName;
    salvor::Text MiddleName;
    salvor::Text LastName;
    salvor::Text NickName;
    salvor::Text Nickname;
    salvor::Text DisplayName;
    salvor::Text FullName;
    salvor::Text Prefix;
    salvor::Text Suffix;
    salvor::Text FirstPhonetic;
    salvor::Text MiddlePhonetic;
    salvor::Text LastPhonetic;
    salvor::Text OriginalFirstName;
    salvor::Text OriginalLastName;
    salvor::Text _fullName;
    salvor::Text _fullNamePhonetic;
    salvor::Text _shortContactItemDescription;
    salvor::Text JobTitle;
    salvor::Text Department;
    salvor::Text Organization;
    salvor::Text ContactNo1 = "";
    salvor::Text ContactNo2;
    salvor::Text ContactNo3;
    salvor::Text ContactNo4;
    salvor::Text ContactNo5;
    salvor::Text ContactNo6;
    salvor::Text EmailAddress1;
    salvor::Text EmailAddress2;
    salvor::Text EmailAddress3;
    salvor::Text OriginalContactNo1;
    salvor::Text ContactNumbersText;
    salvor::Text ContactEmailAddresesText;
    salvor::Text C15Phone;
    salvor::Text C16Email;
    salvor::Text C17Address;
    List<ContactNumber> ContactNumbers;
    List<ContactEmailAddress> ContactEmailAddresses;
    List<ContactAddress> ContactAddresses;
    List<ContactHomePage> ContactHomePages;
    std::vector<std::string> ContactProfileImages;
    salvor::Text CreatedDate;
    salvor::Text ModifiedDate;
    salvor::Text CreationDate;
    salvor::Text ModificationDate;
    double OriginalCreationDate = 0;
    double OriginalModificationDate = 0;
    salvor::Text Birthday;
    salvor::Text Note;
    salvor::Text ImageUri;
    salvor::Text ExternalIdentifier;
    salvor::Text ExternalModificationTag;
    salvor::Text ExternalUUID;
    std::vector<std::uint8_t> _contactProfileBitmapImage;

    template <class Self = Contact>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(
                field("handleId", &Self::handleId), field("SlNo", &Self::SlNo),
                field("isChecked", &Self::isChecked), field("Guid", &Self::Guid),
                field("Title", &Self::Title), field("FirstName", &Self::FirstName),
                field("MiddleName", &Self::MiddleName), field("LastName", &Self::LastName),
                field("NickName", &Self::NickName), field("Nickname", &Self::Nickname),
                field("DisplayName", &Self::DisplayName), field("FullName", &Self::FullName),
                field("Prefix", &Self::Prefix), field("Suffix", &Self::Suffix),
                field("FirstPhonetic", &Self::FirstPhonetic),
                field("MiddlePhonetic", &Self::MiddlePhonetic),
                field("LastPhonetic", &Self::LastPhonetic),
                field("OriginalFirstName", &Self::OriginalFirstName),
                field("OriginalLastName", &Self::OriginalLastName),
                field("_fullName", &Self::_fullName),
                field("_fullNamePhonetic", &Self::_fullNamePhonetic),
                field("_shortContactItemDescription", &Self::_shortContactItemDescription),
                field("JobTitle", &Self::JobTitle), field("Department", &Self::Department),
                field("Organization", &Self::Organization), field("ContactNo1", &Self::ContactNo1),
                field("ContactNo2", &Self::ContactNo2), field("ContactNo3", &Self::ContactNo3),
                field("ContactNo4", &Self::ContactNo4), field("ContactNo5", &Self::ContactNo5),
                field("ContactNo6", &Self::ContactNo6),
                field("EmailAddress1", &Self::EmailAddress1),
                field("EmailAddress2", &Self::EmailAddress2),
                field("EmailAddress3", &Self::EmailAddress3),
                field("OriginalContactNo1", &Self::OriginalContactNo1),
                field("ContactNumbersText", &Self::ContactNumbersText),
                field("ContactEmailAddresesText", &Self::ContactEmailAddresesText),
                field("C15Phone", &Self::C15Phone), field("C16Email", &Self::C16Email),
                field("C17Address", &Self::C17Address),
                field("ContactNumbers", &Self::ContactNumbers),
                field("ContactEmailAddresses", &Self::ContactEmailAddresses),
                field("ContactAddresses", &Self::ContactAddresses),
                field("ContactHomePages", &Self::ContactHomePages),
                field("ContactProfileImages", &Self::ContactProfileImages),
                field("CreatedDate", &Self::CreatedDate),
                field("ModifiedDate", &Self::ModifiedDate),
                field("CreationDate", &Self::CreationDate),
                field("ModificationDate", &Self::ModificationDate),
                field("OriginalCreationDate", &Self::OriginalCreationDate),
                field("OriginalModificationDate", &Self::OriginalModificationDate),
                field("Birthday", &Self::Birthday), field("Note", &Self::Note),
                field("ImageUri", &Self::ImageUri),
                field("ExternalIdentifier", &Self::ExternalIdentifier),
                field("ExternalModificationTag", &Self::ExternalModificationTag),
                field("ExternalUUID", &Self::ExternalUUID),
                field("_contactProfileBitmapImage", &Self::_contactProfileBitmapImage)));
    }
};

}  // namespace salvor
