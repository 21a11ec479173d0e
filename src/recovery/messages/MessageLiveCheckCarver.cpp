#include "recovery/messages/MessageLiveCheckCarver.h"

#include <fmt/format.h>

#include "sql/SqlFormat.h"

namespace salvor {

MessageLiveCheckCarver::MessageLiveCheckCarver(ScanState& state, std::stop_token cancelled,
                                               const SignatureUse<Message>& use,
                                               std::string version)
    : RecordCarver(state, std::move(cancelled), use), key_(use.key), version_(std::move(version)) {}

TablePatterns MessageLiveCheckCarver::choosePatterns() {
    const auto signature = findSignature(state_, key_);
    if (signature == nullptr) return {};
    signature->TablePatterns = signature->FindPatternsByVersion(version_);
    return signature->TablePatterns;
}

void MessageLiveCheckCarver::recordCarved(const std::shared_ptr<Message>& message) {
    RecoveredFiltered.push_back(message);
    RecoveredData.push_back(message);
}

void MessageLiveCheckCarver::CheckIfinDB(const std::filesystem::path& path) {
    FMDBUtils database(path.string(), state_.sourcePolicy, cancelled_);
    if (!database.openDatabase()) return;
    List<baseRecoveryObject> kept;
    for (const auto& record : RecoveredData) {
        const auto* message = dynamic_cast<const Message*>(record.get());
        if (message == nullptr || message->Text.value_or("").empty()) continue;
        if (message->OriginalDate == 0) continue;
        if (!CheckMessageInDB(*message, database)) kept.push_back(record);
    }
    RecoveredFiltered = std::move(kept);
}

bool MessageLiveCheckCarver::CheckMessageInDB(const Message& message, FMDBUtils& database) const {
    // Kept: unquoted-values.
    auto sql = formatSql("SELECT text, date FROM message where text=%@", {message.Text});
    if (message.OriginalDate > 0) sql += fmt::format(" and date={:f}", message.OriginalDate);
    return database.executeQuery(sql).next();
}

void storeMessageFlags(Message& message, const OptionalColumnValue& value) {
    // Cut to the field's 32 bits.
    message.Flags = static_cast<std::int32_t>(columnInteger(value));
    message.IsFromMe = message.Flags == 3 || message.Flags == 33 || message.Flags == 35;
}

}  // namespace salvor
