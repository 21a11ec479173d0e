#include "services/ContactLookup.h"

#include <algorithm>

#include "util/StringUtils.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {

ContactLookup::ContactLookup(const RecordContext& context) {
    for (const auto& contact : context.liveContacts()) add(contact);
    for (const auto& contact : context.deletedContacts()) add(contact);
}

void ContactLookup::add(const std::shared_ptr<Contact>& contact) {
    const auto position = contacts_.size();
    contacts_.push_back(contact);
    for (const auto slot : {&Contact::ContactNo1, &Contact::ContactNo2, &Contact::ContactNo3,
                            &Contact::ContactNo4, &Contact::ContactNo5, &Contact::ContactNo6})
        phones_.add((*contact).*slot, position);
    for (const auto& number : contact->ContactNumbers) phones_.add(number->Number, position);
    for (const auto slot :
         {&Contact::EmailAddress1, &Contact::EmailAddress2, &Contact::EmailAddress3}) {
        const auto& email = (*contact).*slot;
        if (!StringUtils::IsNullOrEmpty(email)) emails_.emplace(email, position);
    }
    serialNumbers_.emplace(contact->SlNo, position);
}

std::shared_ptr<Contact> ContactLookup::FindContactFromContactsListByPhoneNumber(
    const Text& number) const {
    const auto position = phones_.find(number);
    return position ? contacts_[*position] : nullptr;
}

std::shared_ptr<Contact> ContactLookup::FindContactFromContactsListByEmailAddress(
    const Text& address) const {
    if (!address) return nullptr;
    const auto found = emails_.find(address);
    return found != emails_.end() ? contacts_[found->second] : nullptr;
}

std::shared_ptr<Contact> ContactLookup::findBySlNo(std::int64_t number) const {
    const auto found = serialNumbers_.find(number);
    return found != serialNumbers_.end() ? contacts_[found->second] : nullptr;
}

std::shared_ptr<Contact> ContactLookup::find(const Text& address) const {
    if (iPhoneNumberUtils::IsPhoneNumber(address))
        return FindContactFromContactsListByPhoneNumber(address);
    if (IsEmailAddress(address)) return FindContactFromContactsListByEmailAddress(address);
    return nullptr;
}

bool IsEmailAddress(const Text& text) {
    if (!text) return false;
    const auto at = text->find('@');
    if (at == 0 || at == std::string::npos || text->find('@', at + 1) != std::string::npos)
        return false;
    const auto dot = text->find('.', at + 1);
    if (dot == std::string::npos || dot == at + 1 || text->ends_with('.')) return false;
    return std::none_of(text->begin(), text->end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= ' ' || byte == 127;
    });
}

}  // namespace salvor
