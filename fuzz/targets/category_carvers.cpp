// The carvers of all categories over a whole database: what carved columns become in records and
// rows, and what carved texts do to the statements that look for live rows. Byte 72, which SQLite
// keeps for later, chooses the carver.
#include <array>

#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "recovery/AppointmentsSQLiteRecovery.h"
#include "recovery/CallCarver.h"
#include "recovery/ContactSearchsSQLiteRecovery.h"
#include "recovery/ContactsABMultiValueSQLiteRecovery.h"
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
#include "scan/ScanState.h"

using namespace salvor;

namespace {

template <class Carver>
void carve(ScanState& state, const std::filesystem::path& file) {
    Carver carver(state);
    carver.DoRecoveryPath(file);
}

template <class Carver>
void carveAndFilter(ScanState& state, const std::filesystem::path& file) {
    Carver carver(state);
    carver.DoRecoveryPath(file);
    carver.filterMessages();
}

constexpr std::array kCarvers = {
    carve<MessagesSQLiteRecovery>,
    carve<MessagesIOS4SQLiteRecovery>,
    carve<MessagesIOS5_6SQLiteRecovery>,
    carve<MessageHandleSQLiteRecovery>,
    carve<MessageChatHandleJoinSQLiteRecovery>,
    carve<MessageChatMessageJoinSQLiteRecovery>,
    carve<MessageGuidAndRowIdConnectionSQLiteRecovery>,
    carve<MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery>,
    carveAndFilter<WhatsAppMessagesSQLiteRecovery>,
    carveAndFilter<NotesSQLiteRecovery>,
    carveAndFilter<NoteBodiesSQLiteRecovery>,
    carveAndFilter<NoteBodiesIOS9SQLiteRecovery>,
    carveAndFilter<ContactSearchsSQLiteRecovery>,
    carve<ContactsABMultiValueSQLiteRecovery>,
    carve<AppointmentsSQLiteRecovery>,
    carveAndFilter<CallHistorySQLiteRecovery>,
    carveAndFilter<CallHistoryIos8Recovery>,
};

}  // namespace

SALVOR_FUZZ_TARGET(category_carvers) {
    constexpr std::size_t kChoice = 72;
    if (input.size() <= kChoice) return;
    const fuzz::InputFile file(input);
    ScanState state;
    state.recoverySignatures = fuzz::shippedSignatures();
    kCarvers.at(input[kChoice] % kCarvers.size())(state, file.path());
}
