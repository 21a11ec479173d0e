#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "records/Message.h"
#include "recovery/RecordCarver.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Carver of messages of the group layout, which tells deleted from live with SQL once the file is
/// carved: `RecoveredData` then holds what was carved, `RecoveredFiltered` what is not live.
class MessageLiveCheckCarver : public RecordCarver<AbstractSqLiteRecovery, Message> {
  public:
    /// Replaces `RecoveredFiltered` by the carved messages that have a text and a date and no live
    /// row. When the database at `path` does not open, the list stays.
    void CheckIfinDB(const std::filesystem::path& path);

  protected:
    MessageLiveCheckCarver(ScanState& state, std::stop_token cancelled,
                           const SignatureUse<Message>& use, std::string version);

    /// The patterns that support the version. They replace the signature's own. Kept:
    /// narrowed-for-later-carvers. Carvers of other categories run beside this one, but a signature
    /// is touched by the workers of its own category alone, one after the other, so nothing is
    /// locked here.
    TablePatterns choosePatterns() override;
    void recordCarved(const std::shared_ptr<Message>& message) override;
    void afterRecovery() override { CheckIfinDB(fullDBPath); }

  private:
    bool CheckMessageInDB(const Message& message, FMDBUtils& database) const;

    SignatureKey key_;
    std::string version_;
};

/// The "flags" column: 3, 33 and 35 are messages sent by the owner.
void storeMessageFlags(Message& message, const OptionalColumnValue& value);

}  // namespace salvor
