#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "records/ConversationContact.h"
#include "records/List.h"
#include "services/PhoneIndex.h"
#include "util/Text.h"

namespace salvor {

/// Finds a conversation by what it holds; of several the first in list order; null without a hit.
/// It knows a conversation as it stood when `extend` first saw it.
class ConversationLookup {
  public:
    using Found = std::shared_ptr<ConversationContact>;

    /// Takes in the conversations that were appended to `conversations` since the last call.
    void extend(const List<ConversationContact>& conversations);
    void add(const Found& conversation);

    /// One whose `RowIds` hold this text.
    Found FindConversationContactFromHandleId(const Text& handleId) const;
    Found findByChatId(std::int64_t chatId) const;
    /// One whose `PhoneNumberHandleId` is this text.
    Found findByCounterpart(const Text& counterpart) const;
    Found FindContactFromConversationContactsListByPhoneNumber(const Text& number) const;
    Found FindContactFromConversationContactsListByEmailAddress(const Text& address) const;
    Found FindContactFromConversationContactsListByName(const Text& name) const;

  private:
    using Positions = std::unordered_map<Text, std::size_t>;

    void addPhone(const ConversationPhone& phone, std::size_t position);
    Found at(const Positions& positions, const Text& key) const;

    List<ConversationContact> conversations_;
    Positions rowIds_;
    Positions counterparts_;
    Positions phoneObjects_;
    Positions emails_;
    Positions names_;
    PhoneIndex phoneTexts_;
    std::unordered_map<std::int64_t, std::size_t> chatIds_;
};

}  // namespace salvor
