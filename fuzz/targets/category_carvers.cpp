// The carvers of all categories over a whole database: what carved columns become in records and
// rows, and what carved texts do to the statements that look for live rows. Byte 72, which SQLite
// keeps for later, chooses the carver.
#include <array>

#include "app/state/ScanState.h"
#include "carving/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "carving/MessageChatHandleJoinSQLiteRecovery.h"
#include "carving/MessageChatMessageJoinSQLiteRecovery.h"
#include "carving/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "carving/MessageHandleSQLiteRecovery.h"
#include "carving/MessagesIOS4SQLiteRecovery.h"
#include "carving/MessagesIOS5_6SQLiteRecovery.h"
#include "carving/MessagesSQLiteRecovery.h"
#include "carving/WhatsAppMessagesSQLiteRecovery.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "recovery/carvers/AppointmentsSQLiteRecovery.h"
#include "recovery/carvers/CallCarver.h"
#include "recovery/carvers/ContactSearchsSQLiteRecovery.h"
#include "recovery/carvers/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/carvers/NoteBodiesSQLiteRecovery.h"
#include "recovery/carvers/NotesSQLiteRecovery.h"

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
