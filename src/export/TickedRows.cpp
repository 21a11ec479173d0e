#include "export/TickedRows.h"

#include <type_traits>

namespace salvor {
namespace {

/// Ticks the rows of a category's lists, numbered through from one list to the next.
template <class... Rows>
void tick(const TickedSerials& ticked, std::int32_t code, const List<Rows>&... lists) {
    static const std::set<std::size_t> kNone;
    const auto found = ticked.find(code);
    const auto& serials = found == ticked.end() ? kNone : found->second;
    std::size_t serial = 0;
    const auto tickList = [&](const auto& rows) {
        for (const auto& row : rows) {
            ++serial;
            using Tick = std::remove_cvref_t<decltype(row->isChecked)>;
            row->isChecked = static_cast<Tick>(serials.count(serial));
        }
    };
    (tickList(lists), ...);
}

}  // namespace

void tickRows(ScanState& state, const TickedSerials& ticked) {
    tick(ticked, 1, state.SMSContent, state.DeletedSMS);
    tick(ticked, 2, state.Photos, state.DeletedPhotos, state.Videos, state.DeletedVideos);
    tick(ticked, 3, state.ContactContent, state.DeletedContact);
    tick(ticked, 4, state.CallLogContent, state.DeletedCallLog);
    tick(ticked, 5, state.WhatsAppContent, state.DeletedWhatsApp);
    tick(ticked, 6, state.NotesContent, state.DeletedNotes);
    tick(ticked, 7, state.InternetContent, state.DeletedInternet);
    tick(ticked, 8, state.CalendarContent, state.DeletedCalendar);
}

}  // namespace salvor
