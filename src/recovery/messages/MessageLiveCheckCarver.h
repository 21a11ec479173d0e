#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "records/Message.h"
#include "recovery/messages/MessageTableCarver.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Carver of messages of the group layout, which tells deleted from live with SQL once the file is
/// carved: `RecoveredData` then holds what was carved, `RecoveredFiltered` what is not live.
class MessageLiveCheckCarver : public MessageTableCarver<AbstractSqLiteRecovery, Message> {
  public:
    /// Replaces `RecoveredFiltered` by the carved messages that have a text and a date and no live
    /// row. When the database at `path` does not open, the list stays.
    void CheckIfinDB(const std::filesystem::path& path);

  protected:
    MessageLiveCheckCarver(ScanState& state, std::stop_token cancelled, std::string version,
                           Attributes attributes);

    void recordCarved(const std::shared_ptr<Message>& message) override;
    void afterRecovery() override { CheckIfinDB(fullDBPath); }

  private:
    bool CheckMessageInDB(const Message& message, FMDBUtils& database) const;
};

/// The "flags" column: 3, 33 and 35 are messages sent by the owner.
void storeMessageFlags(Message& message, const OptionalColumnValue& value);

}  // namespace salvor
