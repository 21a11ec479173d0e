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

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(
                field("handleId", &Contact::handleId), field("SlNo", &Contact::SlNo),
                field("isChecked", &Contact::isChecked), field("Guid", &Contact::Guid),
                field("Title", &Contact::Title), field("FirstName", &Contact::FirstName),
                field("MiddleName", &Contact::MiddleName), field("LastName", &Contact::LastName),
                field("NickName", &Contact::NickName), field("Nickname", &Contact::Nickname),
                field("DisplayName", &Contact::DisplayName), field("FullName", &Contact::FullName),
                field("Prefix", &Contact::Prefix), field("Suffix", &Contact::Suffix),
                field("FirstPhonetic", &Contact::FirstPhonetic),
                field("MiddlePhonetic", &Contact::MiddlePhonetic),
                field("LastPhonetic", &Contact::LastPhonetic),
                field("OriginalFirstName", &Contact::OriginalFirstName),
                field("OriginalLastName", &Contact::OriginalLastName),
                field("_fullName", &Contact::_fullName),
                field("_fullNamePhonetic", &Contact::_fullNamePhonetic),
                field("_shortContactItemDescription", &Contact::_shortContactItemDescription),
                field("JobTitle", &Contact::JobTitle), field("Department", &Contact::Department),
                field("Organization", &Contact::Organization),
                field("ContactNo1", &Contact::ContactNo1),
                field("ContactNo2", &Contact::ContactNo2),
                field("ContactNo3", &Contact::ContactNo3),
                field("ContactNo4", &Contact::ContactNo4),
                field("ContactNo5", &Contact::ContactNo5),
                field("ContactNo6", &Contact::ContactNo6),
                field("EmailAddress1", &Contact::EmailAddress1),
                field("EmailAddress2", &Contact::EmailAddress2),
                field("EmailAddress3", &Contact::EmailAddress3),
                field("OriginalContactNo1", &Contact::OriginalContactNo1),
                field("ContactNumbersText", &Contact::ContactNumbersText),
                field("ContactEmailAddresesText", &Contact::ContactEmailAddresesText),
                field("C15Phone", &Contact::C15Phone), field("C16Email", &Contact::C16Email),
                field("C17Address", &Contact::C17Address),
                field("ContactNumbers", &Contact::ContactNumbers),
                field("ContactEmailAddresses", &Contact::ContactEmailAddresses),
                field("ContactAddresses", &Contact::ContactAddresses),
                field("ContactHomePages", &Contact::ContactHomePages),
                field("ContactProfileImages", &Contact::ContactProfileImages),
                field("CreatedDate", &Contact::CreatedDate),
                field("ModifiedDate", &Contact::ModifiedDate),
                field("CreationDate", &Contact::CreationDate),
                field("ModificationDate", &Contact::ModificationDate),
                field("OriginalCreationDate", &Contact::OriginalCreationDate),
                field("OriginalModificationDate", &Contact::OriginalModificationDate),
                field("Birthday", &Contact::Birthday), field("Note", &Contact::Note),
                field("ImageUri", &Contact::ImageUri),
                field("ExternalIdentifier", &Contact::ExternalIdentifier),
                field("ExternalModificationTag", &Contact::ExternalModificationTag),
                field("ExternalUUID", &Contact::ExternalUUID),
                field("_contactProfileBitmapImage", &Contact::_contactProfileBitmapImage)));
    }
};

}  // namespace salvor
