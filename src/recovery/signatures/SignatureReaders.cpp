#include "recovery/signatures/SignatureReaders.h"

#include <fmt/format.h>
#include <optional>
#include <set>

#include "recovery/AppointmentsSQLiteRecovery.h"
#include "recovery/CallCarver.h"
#include "recovery/ContactSearchsSQLiteRecovery.h"
#include "recovery/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "recovery/NoteBodiesSQLiteRecovery.h"
#include "recovery/NotesSQLiteRecovery.h"
#include "recovery/WhatsAppMessagesSQLiteRecovery.h"
#include "recovery/messages/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageChatHandleJoinSQLiteRecovery.h"
#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"
#include "recovery/messages/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageHandleSQLiteRecovery.h"
#include "recovery/messages/MessagesIOS4SQLiteRecovery.h"
#include "recovery/messages/MessagesIOS5_6SQLiteRecovery.h"
#include "recovery/messages/MessagesSQLiteRecovery.h"

namespace salvor {
namespace {

template <class Carver>
SignatureReader reader(std::string_view carver) {
    SignatureReader made{carver, Carver::kSignature.key, {}};
    for (const auto& attribute : Carver::kSignature.attributes)
        made.names.push_back(attribute.name);
    return made;
}

/// The names that the carvers of a table know; nothing when no carver reads the table.
std::optional<std::set<std::string_view>> namesRead(const SignatureKey& key) {
    std::optional<std::set<std::string_view>> names;
    for (const auto& one : signatureReaders()) {
        if (one.key != key) continue;
        if (!names) names.emplace();
        names->insert(one.names.begin(), one.names.end());
    }
    return names;
}

}  // namespace

std::span<const SignatureReader> signatureReaders() {
    static const std::vector<SignatureReader> kReaders{
        reader<MessagesSQLiteRecovery>("MessagesSQLiteRecovery"),
        reader<MessagesIOS4SQLiteRecovery>("MessagesIOS4SQLiteRecovery"),
        reader<MessagesIOS5_6SQLiteRecovery>("MessagesIOS5_6SQLiteRecovery"),
        reader<MessageHandleSQLiteRecovery>("MessageHandleSQLiteRecovery"),
        reader<MessageChatMessageJoinSQLiteRecovery>("MessageChatMessageJoinSQLiteRecovery"),
        reader<MessageChatHandleJoinSQLiteRecovery>("MessageChatHandleJoinSQLiteRecovery"),
        reader<MessageGuidAndRowIdConnectionSQLiteRecovery>(
            "MessageGuidAndRowIdConnectionSQLiteRecovery"),
        reader<MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery>(
            "MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery"),
        reader<ContactSearchsSQLiteRecovery>("ContactSearchsSQLiteRecovery"),
        reader<ContactsSQLiteRecovery>("ContactsSQLiteRecovery"),
        reader<ContactsABMultiValueSQLiteRecovery>("ContactsABMultiValueSQLiteRecovery"),
        reader<CallHistorySQLiteRecovery>("CallHistorySQLiteRecovery"),
        reader<CallHistoryIos8Recovery>("CallHistoryIos8Recovery"),
        reader<AppointmentsSQLiteRecovery>("AppointmentsSQLiteRecovery"),
        reader<NotesSQLiteRecovery>("NotesSQLiteRecovery"),
        reader<NoteBodiesSQLiteRecovery>("NoteBodiesSQLiteRecovery"),
        reader<NoteBodiesIOS9SQLiteRecovery>("NoteBodiesIOS9SQLiteRecovery"),
        reader<WhatsAppMessagesSQLiteRecovery>("WhatsAppMessagesSQLiteRecovery"),
    };
    return kReaders;
}

std::vector<SignatureOddity> unreadSignatures(const SignatureListing& listing) {
    std::vector<SignatureOddity> unread;
    for (const auto& one : listing.signatures) {
        const auto names = namesRead({one.domain, one.database, one.table});
        if (!names) {
            unread.push_back({one.line, fmt::format("table {}: no carver reads it", one.table)});
            continue;
        }
        for (const auto& mapping : one.mappings) {
            if (names->contains(mapping.Name)) continue;
            unread.push_back(
                {mapping.line, fmt::format("table {}: no carver reads the mapping \"{}\"",
                                           one.table, mapping.Name)});
        }
    }
    return unread;
}

}  // namespace salvor
