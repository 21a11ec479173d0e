#include "services/ChatConversations.h"

#include "live/RowReading.h"
#include "services/MessageServices.h"
#include "util/DateUtils.h"
#include "util/StringUtils.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {
namespace {

void addText(std::vector<Text>& list, const Text& text) {
    if (!StringUtils::IsNullOrEmpty(text)) list.push_back(text);
}

void addNumberObject(ConversationContact& conversation, const Text& text) {
    if (!StringUtils::IsNullOrEmpty(text))
        conversation.PhoneNumbers.emplace_back(phoneNumberOf(text));
}

void addPhoneContact(ConversationContact& conversation, const Contact& contact) {
    if (!StringUtils::IsNullOrEmpty(contact.ContactNo1))
        conversation.PhoneNumbers.emplace_back(contact.ContactNo1);
    addText(conversation.Emails, contact.EmailAddress1);
    addText(conversation.Names, contact.FullName);
}

void addEmailContact(ConversationContact& conversation, const Contact& contact) {
    addNumberObject(conversation, contact.ContactNumbersText);
    addText(conversation.Emails, contact.EmailAddress1);
    addText(conversation.Names, contact.FullName);
}

void addHandle(ConversationContact& conversation, const Text& id, const ContactLookup& contacts) {
    const bool isPhone = iPhoneNumberUtils::IsPhoneNumber(id);
    if (const auto contact = contacts.find(id))
        isPhone ? addPhoneContact(conversation, *contact) : addEmailContact(conversation, *contact);
    else if (isPhone)
        addNumberObject(conversation, id);
    else
        addText(IsEmailAddress(id) ? conversation.Emails : conversation.Names, id);
}

std::string displayDate(double secondsSince2001) {
    return DateUtils::ConvertToString(DateUtils::DoubleToIOSDateTime(secondsSince2001));
}

// 0 stands for "not yet".
std::string displayDateIfAny(double secondsSince2001) {
    return secondsSince2001 == 0 ? std::string() : displayDate(secondsSince2001);
}

std::shared_ptr<Message> liveMessage(const ResultSet& row) {
    auto message = std::make_shared<Message>();
    message->RowId = row.longLongIntForColumn("MSG_ROW_ID");
    message->MessageId = message->RowId;
    message->ChatId = row.longLongIntForColumn("chat_id");
    message->Guid = row.stringForColumn("guid");
    message->Text = row.stringForColumn("text");
    message->HandleId = row.longLongIntForColumn("handle_id");
    message->Address = row.stringForColumn("MSG_ADDRESS");
    message->Id = message->Address;
    message->Country = row.stringForColumn("country");
    message->Service = row.stringForColumn("service");
    message->Account = row.stringForColumn("account");
    message->AccountGuid = row.stringForColumn("account_guid");
    message->IsFromMe = row.boolForColumn("is_from_me");
    message->HasAttachment = row.boolForColumn("cache_has_attachments");
    message->OriginalDate = row.doubleForColumn("date");
    message->OriginalDateRead = row.doubleForColumn("date_read");
    message->OriginalDataDelivered = row.doubleForColumn("date_delivered");
    message->Date = displayDate(message->OriginalDate);
    message->DateRead = displayDateIfAny(message->OriginalDateRead);
    message->DateDelivered = displayDateIfAny(message->OriginalDataDelivered);
    message->IsActivated = true;
    message->IsVisible = true;
    return message;
}

}  // namespace

std::shared_ptr<ConversationContact> chatConversation(const MessageChat& chat,
                                                      const List<MessageHandle>& handles,
                                                      const ContactLookup& contacts) {
    auto conversation = std::make_shared<ConversationContact>();
    conversation->ChatId = chat.RowId;
    for (const auto& handle : handles) {
        conversation->RowIds.push_back(std::to_string(handle->RowId));
        addHandle(*conversation, handle->Id, contacts);
    }
    return conversation;
}

std::shared_ptr<ConversationContact> handleConversation(const Text& id, const std::string& rowId,
                                                        const Contact* contact) {
    auto conversation = std::make_shared<ConversationContact>();
    conversation->PhoneNumberHandleId = id;
    conversation->RowIds.push_back(rowId);
    if (contact == nullptr) return conversation;
    addNumberObject(*conversation, contact->ContactNumbersText);
    addText(conversation->Emails, contact->ContactEmailAddresesText);
    addText(conversation->Names, contact->FullName);
    return conversation;
}

void forEachLiveChatMessage(FMDBUtils& database,
                            const std::function<void(std::shared_ptr<Message>)>& take) {
    auto rows = database.executeList(
        {// All columns by name: a table that lacks one still gives its texts.
         "SELECT chat_message_join.chat_id AS chat_id, message.ROWID AS MSG_ROW_ID, "
         "handle.id AS MSG_ADDRESS, message.* "
         "FROM chat_message_join "
         "INNER JOIN message ON message.ROWID = chat_message_join.message_id "
         "LEFT JOIN handle ON handle.ROWID = message.handle_id "
         "ORDER BY message.date, message.ROWID"});
    rows.keepsOfEachRow(roomOf<Message>);
    while (rows.next()) take(liveMessage(rows));
}

}  // namespace salvor
