// The group layout of the message services: conversations are the groups of `group_member`.

#include <string_view>
#include <unordered_map>

#include "records/GroupMember.h"
#include "services/ConversationLookup.h"
#include "services/MessageServices.h"
#include "util/StringUtils.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {
namespace {

// Named parameter included. SQLite knows no such name after "?", so the name is left out of the
// text that is prepared.
constexpr std::string_view kGroupMembers =
    "SELECT address, country from group_member where group_id=?GroupId";

std::vector<GroupMember> groupMembers(FMDBUtils& database, std::int64_t groupId) {
    const std::string sql(kGroupMembers.substr(0, kGroupMembers.find('?') + 1));
    std::vector<GroupMember> members;
    auto rows = database.executeQuery(sql, {groupId});
    while (rows.next())
        members.push_back({rows.stringForColumn("address"), rows.stringForColumn("country")});
    return members;
}

Text nicknameOrName(const Contact& contact) {
    for (const auto name : {&Contact::NickName, &Contact::Nickname, &Contact::FullName,
                            &Contact::FirstName, &Contact::LastName})
        if (!StringUtils::IsNullOrEmpty(contact.*name)) return contact.*name;
    return std::nullopt;
}

void addContact(ConversationContact& conversation, const Contact& contact) {
    if (!StringUtils::IsNullOrEmpty(contact.ContactNo1))
        conversation.PhoneNumbers.emplace_back(contact.ContactNo1);
    if (!StringUtils::IsNullOrEmpty(contact.EmailAddress1))
        conversation.Emails.push_back(contact.EmailAddress1);
    if (const auto name = nicknameOrName(contact)) conversation.Names.push_back(name);
}

void addMember(ConversationContact& conversation, const Text& address,
               const ContactLookup& contacts) {
    if (StringUtils::IsNullOrEmpty(address)) return;
    if (const auto contact = contacts.find(address))
        addContact(conversation, *contact);
    else if (iPhoneNumberUtils::IsPhoneNumber(address))
        conversation.PhoneNumbers.emplace_back(address);
    else if (IsEmailAddress(address))
        conversation.Emails.push_back(address);
}

std::shared_ptr<ConversationContact> conversationOfAddress(const ConversationLookup& known,
                                                           const Text& address) {
    if (iPhoneNumberUtils::IsPhoneNumber(address))
        return known.FindContactFromConversationContactsListByPhoneNumber(address);
    if (IsEmailAddress(address))
        return known.FindContactFromConversationContactsListByEmailAddress(address);
    return known.FindContactFromConversationContactsListByName(address);
}

}  // namespace

void MessageServices::recoverGroups(const DeviceInfo& device) {
    connect(device);
    const ContactLookup contacts(state_);
    for (const auto id : groupIdsInDB()) {
        if (cancelled_.stop_requested()) break;
        _ConversationContacts.push_back(groupConversation(id, contacts));
    }
    RecoverDeletedMessages(device);
    publishConversations();
}

std::shared_ptr<ConversationContact> MessageServices::groupConversation(
    std::int64_t groupId, const ContactLookup& contacts) {
    auto conversation = std::make_shared<ConversationContact>();
    conversation->GroupId = groupId;
    for (const auto& member : groupMembers(*dbUtils_, groupId))
        addMember(*conversation, member.Address, contacts);
    return conversation;
}

void MessageServices::recoverGroupMessages(const DeviceInfo& device) {
    const auto carver = GetRecoveryObject();
    carver->DoRecoveryPath(ConnectionFileFullPath(device).path);
    ConversationLookup known;
    known.extend(_ConversationContacts);
    // Each message goes in front of those before it; the fronts are gathered first, so that a long
    // conversation is moved once.
    std::unordered_map<std::shared_ptr<ConversationContact>, List<Message>> fronts;
    for (const auto& record : carver->RecoveredFiltered) {
        auto message = std::dynamic_pointer_cast<Message>(record);
        if (message == nullptr) continue;
        ++recovered_;
        model_.push_back(message);
        const auto conversation = conversationOfAddress(known, message->Address);
        if (conversation == nullptr) continue;
        tieDeletedMessage(conversation, *message);
        fronts[conversation].push_back(std::move(message));
    }
    for (const auto& [conversation, front] : fronts)
        conversation->Messages.insert(conversation->Messages.begin(), front.rbegin(), front.rend());
}

}  // namespace salvor
