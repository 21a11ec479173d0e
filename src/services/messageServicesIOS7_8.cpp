#include "services/messageServicesIOS7_8.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "recovery/messages/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageChatHandleJoinSQLiteRecovery.h"
#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"
#include "recovery/messages/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageHandleSQLiteRecovery.h"
#include "recovery/messages/MessagesSQLiteRecovery.h"
#include "services/ChatConversations.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

/// The texts of the live list rows, which are mostly those of the messages in the conversations:
/// held once, a large backup needs a tenth less memory.
class RowTexts {
  public:
    explicit RowTexts(const List<SMS>& rows) {
        rows_.reserve(rows.size());
        for (const auto& row : rows) rows_.push_back(row.get());
        std::stable_sort(rows_.begin(), rows_.end(),
                         [](const SMS* a, const SMS* b) { return a->RowID < b->RowID; });
    }

    void shareWith(Message& message) const {
        const auto row =
            std::lower_bound(rows_.begin(), rows_.end(), message.RowId,
                             [](const SMS* one, std::int64_t rowId) { return one->RowID < rowId; });
        if (row == rows_.end()) return;
        share(message.Guid, (*row)->GUID);
        share(message.Text, (*row)->Message);
        share(message.Date, (*row)->LocalTime);
    }

  private:
    static void share(Text& text, const Text& same) {
        if (text == same) text = same;
    }

    std::vector<const SMS*> rows_;
};

}  // namespace

void messageServicesIOS7_8::RecoverFromIOSBackup(const DeviceInfo& device) {
    connect(device);
    contacts_ = ContactLookup(state_);
    if (dbUtils_->openDatabase()) {
        addChatConversations();
        addLiveMessages();
    }
    addCarvedHandles(device);
    RecoverDeletedMessages(device);
    publishConversations();
}

void messageServicesIOS7_8::addChatConversations() {
    auto handles = handlesOfChatsInDB();
    for (const auto& chat : MessageChatsInDB()) {
        if (cancelled_.stop_requested()) return;
        // Taken out, since a row id is one chat's: where a file gives it to many, the first has
        // the handles.
        const auto own = handles.extract(chat->RowId);
        _ConversationContacts.push_back(
            chatConversation(*chat, own.empty() ? List<MessageHandle>() : own.mapped(), contacts_));
    }
    known_.extend(_ConversationContacts);
}

void messageServicesIOS7_8::addLiveMessages() {
    if (_ConversationContacts.empty()) return;  // a database without chats has no such tables
    const RowTexts rowTexts(state_.AllSMSContent);
    forEachLiveChatMessage(*dbUtils_, [&](std::shared_ptr<Message> message) {
        const auto conversation = known_.findByChatId(message->ChatId);
        if (conversation == nullptr) return;
        rowTexts.shareWith(*message);
        ++retrieved_;
        model_.push_back(message);
        message->ConversationContact = conversation;
        conversation->Messages.push_back(std::move(message));
    });
}

void messageServicesIOS7_8::addCarvedHandles(const DeviceInfo& device) {
    MessageHandleSQLiteRecovery carver(state_, cancelled_);
    carver.DoRecoveryPath(ConnectionFileFullPath(device).path);
    for (const auto& record : carver.RecoveredFiltered) {
        const auto& handle = static_cast<const MessageHandle&>(*record);
        const auto rowId = std::to_string(handle.RowId);
        if (!_ConversationContacts.empty() &&
            StringUtils::sameText(_ConversationContacts.back()->PhoneNumberHandleId, handle.Id))
            _ConversationContacts.back()->RowIds.push_back(rowId);
        else
            _ConversationContacts.push_back(
                handleConversation(handle.Id, rowId, contacts_.find(handle.Id).get()));
    }
}

CarvedMessageLinks messageServicesIOS7_8::carveLinks(const DeviceInfo& device) {
    const auto file = ConnectionFileFullPath(device);
    CarvedMessageLinks links;
    const auto carve = [&](auto carver, auto take) {
        carver.takeLink = take;
        carver.DoRecoveryPath(file.path);
    };
    const auto add = [&links](const auto& link) { links.add(link); };
    carve(MessageGuidAndRowIdConnectionSQLiteRecovery(state_, cancelled_), add);
    carve(MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery(state_, cancelled_), add);
    carve(MessageChatHandleJoinSQLiteRecovery(state_, cancelled_),
          [&](const auto& link) { links.add(link, known_); });
    carve(MessageChatMessageJoinSQLiteRecovery(state_, cancelled_), add);
    return links;
}

void messageServicesIOS7_8::RecoverDeletedMessages(const DeviceInfo& device) {
    known_.extend(_ConversationContacts);
    const auto links = carveLinks(device);
    state_.unKnownCount = 0;
    nextUnknown_ = 1;
    madeForHandle_.clear();
    MessagesSQLiteRecovery carver(state_, cancelled_);
    carver.DoRecoveryPath(ConnectionFileFullPath(device).path);
    for (const auto& record : carver.RecoveredFiltered) {
        auto message = std::static_pointer_cast<Message>(record);
        const auto conversation = conversationOf(*message, links);
        tieDeletedMessage(conversation, *message);
        ++recovered_;
        model_.push_back(message);
        conversation->Messages.push_back(std::move(message));
    }
    known_.extend(_ConversationContacts);
}

std::shared_ptr<ConversationContact> messageServicesIOS7_8::conversationOf(
    Message& message, const CarvedMessageLinks& links) {
    if (auto found = known_.FindConversationContactFromHandleId(std::to_string(message.HandleId)))
        return found;
    if (const auto made = madeForHandle_.find(message.HandleId); made != madeForHandle_.end())
        return made->second;
    if (auto found = links.conversationOf(message, known_)) return found;
    if (StringUtils::IsNullOrEmpty(message.Id)) message.Id = links.counterpartOf(message);
    if (auto found = known_.findByCounterpart(message.Id)) return found;
    if (auto found = named_.findByCounterpart(message.Id)) return found;
    return addUnknownConversation(message);
}

std::shared_ptr<ConversationContact> messageServicesIOS7_8::addUnknownConversation(
    const Message& message) {
    const bool unknown = StringUtils::IsNullOrEmpty(message.Id);
    const Text counterpart = unknown ? fmt::format("Unknown {}", nextUnknown_++) : message.Id;
    auto conversation = std::make_shared<ConversationContact>();
    conversation->PhoneNumbers.emplace_back(phoneNumberOf(counterpart));
    conversation->PhoneNumberHandleId = counterpart;
    conversation->RowIds.push_back(std::to_string(message.HandleId));
    _ConversationContacts.push_back(conversation);
    if (!unknown) named_.add(conversation);
    // Below 1 an id names no handle. Kept: unknown-handle-shared.
    if (message.HandleId > 0) madeForHandle_.emplace(message.HandleId, conversation);
    return conversation;
}

std::shared_ptr<ConversationContact> messageServicesIOS7_8::FindConversationContactFromHandleId(
    const std::string& handleId) {
    known_.extend(_ConversationContacts);
    return known_.FindConversationContactFromHandleId(handleId);
}

std::shared_ptr<Contact> messageServicesIOS7_8::findContactFromHandleId(
    std::int64_t handleId) const {
    return ContactLookup(state_).findBySlNo(handleId);
}

void messageServicesIOS7_8::updateSMSAddresses() {
    const auto lookups = state_.lookups();
    if (lookups == nullptr) return;
    for (const auto& row : state_.DeletedSMS) {
        const auto number = lookups->GetPhoneNumberForHID(row->handleID, row->Address);
        row->Address = lookups->GetPhoneNumberForID(row->handleID, number);
    }
}

void messageServicesIOS7_8::updatePhoneNumbersInMessages() {
    const ContactLookup contacts(state_);
    for (const auto& row : state_.DeletedSMS)
        // Kept: second-number-as-address.
        if (const auto contact = contacts.findBySlNo(row->RowID))
            row->Address = contact->ContactNo2;
}

}  // namespace salvor
