#pragma once

#include <cstdint>

#include "records/baseRecoveryObject.h"

namespace salvor {

/// A row of the chat table.
struct MessageChat : baseRecoveryObject {
    salvor::Text ChatIdentifier;
    salvor::Text AccountId;

    static constexpr auto fields() {
        return std::tuple_cat(baseRecoveryObject::fields(),
                              std::make_tuple(field("ChatIdentifier", &MessageChat::ChatIdentifier),
                                              field("AccountId", &MessageChat::AccountId)));
    }
};

/// A row of the handle table.
struct MessageHandle : baseRecoveryObject {
    salvor::Text Id;

    static constexpr auto fields() {
        return std::tuple_cat(baseRecoveryObject::fields(),
                              std::make_tuple(field("Id", &MessageHandle::Id)));
    }
};

/// A carved link between chat and message, in `ChatId` and `MessageId`.
struct ChatMessageJoin : baseRecoveryObject {
    std::int32_t SlNo = 0;

    static constexpr auto fields() {
        return std::tuple_cat(baseRecoveryObject::fields(),
                              std::make_tuple(field("SlNo", &ChatMessageJoin::SlNo)));
    }
};

/// A carved link between chat (`ChatId`) and handle.
struct ChatHandleJoin : baseRecoveryObject {
    salvor::Text HandleId;

    static constexpr auto fields() {
        return std::tuple_cat(baseRecoveryObject::fields(),
                              std::make_tuple(field("HandleId", &ChatHandleJoin::HandleId)));
    }
};

/// A carved pair of message row id and GUID.
struct MessageGuidRowId : baseRecoveryObject {
    salvor::Text Guid;

    static constexpr auto fields() {
        return std::tuple_cat(baseRecoveryObject::fields(),
                              std::make_tuple(field("Guid", &MessageGuidRowId::Guid)));
    }
};

/// A carved pair of chat row id and chat GUID; `Id` is the part of the GUID after ";".
struct MessageChatGuidAndChatIdHandleConnection : baseRecoveryObject {
    salvor::Text Guid;
    salvor::Text Id;

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("Guid", &MessageChatGuidAndChatIdHandleConnection::Guid),
                            field("Id", &MessageChatGuidAndChatIdHandleConnection::Id)));
    }
};

}  // namespace salvor
