#pragma once

#include <cstdint>

#include "records/baseRecoveryObject.h"

namespace salvor {

/// A row of the chat table.
struct MessageChat : baseRecoveryObject {
    salvor::Text ChatIdentifier;
    salvor::Text AccountId;

    template <class Self = MessageChat>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("ChatIdentifier", &Self::ChatIdentifier),
                                              field("AccountId", &Self::AccountId)));
    }
};

/// A row of the handle table.
struct MessageHandle : baseRecoveryObject {
    salvor::Text Id;

    template <class Self = MessageHandle>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("Id", &Self::Id)));
    }
};

/// A carved link between chat and message, in `ChatId` and `MessageId`.
struct ChatMessageJoin : baseRecoveryObject {
    std::int32_t SlNo = 0;

    template <class Self = ChatMessageJoin>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("SlNo", &Self::SlNo)));
    }
};

/// A carved link between chat (`ChatId`) and handle.
struct ChatHandleJoin : baseRecoveryObject {
    salvor::Text HandleId;

    template <class Self = ChatHandleJoin>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("HandleId", &Self::HandleId)));
    }
};

/// A carved pair of message row id and GUID.
struct MessageGuidRowId : baseRecoveryObject {
    salvor::Text Guid;

    template <class Self = MessageGuidRowId>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("Guid", &Self::Guid)));
    }
};

/// A carved pair of chat row id and chat GUID; `Id` is the part of the GUID after ";".
struct MessageChatGuidAndChatIdHandleConnection : baseRecoveryObject {
    salvor::Text Guid;
    salvor::Text Id;

    template <class Self = MessageChatGuidAndChatIdHandleConnection>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("Guid", &Self::Guid), field("Id", &Self::Id)));
    }
};

}  // namespace salvor
