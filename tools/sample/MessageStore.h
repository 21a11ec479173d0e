#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tools/sample/SampleConversation.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {

/// Writes messages into sms.db in the layout of one generation, its companion tables included.
class MessageStore {
  public:
    virtual ~MessageStore() = default;
    MessageStore() = default;
    MessageStore(const MessageStore&) = delete;
    MessageStore& operator=(const MessageStore&) = delete;

    virtual void create(const std::vector<SampleChat>& chats) = 0;
    /// Stores the message and returns its row id.
    virtual std::int64_t add(const SampleMessage& message) = 0;
    virtual void remove(std::int64_t rowId) = 0;
    /// Takes the chat away, not its messages.
    virtual void removeChat(std::size_t chat) = 0;
    /// The `date` column of the message, in the unit of this generation.
    virtual std::int64_t storedDate(const SampleMessage& message) const = 0;
    virtual bool hasGuid(const SampleMessage& message) const = 0;
    /// The row id of the chat or group.
    virtual std::int64_t chatRowId(std::size_t chat) const = 0;
    /// The row id of the message's handle, 0 when it has none.
    virtual std::int64_t handleRowId(const SampleMessage& message) const = 0;
};

/// iOS 4 and 5: messages grouped by group_id.
std::unique_ptr<MessageStore> makeGroupMessageStore(SqliteFile& database, int ios);
/// iOS 6 to 9: chats, handles and join tables.
std::unique_ptr<MessageStore> makeChatMessageStore(SqliteFile& database, int ios);

constexpr std::int64_t kReferenceDate = 978307200;  ///< 2001-01-01 in Unix seconds
inline std::int64_t sinceReference(std::int64_t unixSeconds) {
    return unixSeconds == 0 ? 0 : unixSeconds - kReferenceDate;
}
inline SqliteValue orNull(const std::optional<std::string>& text) {
    return text ? SqliteValue(*text) : SqliteValue();
}

}  // namespace salvor
