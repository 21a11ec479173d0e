#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/Calendar.h"
#include "records/CallLog.h"
#include "records/Contact.h"
#include "records/List.h"
#include "records/ListRows.h"
#include "records/Note.h"
#include "records/SMS.h"
#include "records/WhatsApp.h"

namespace salvor {

/// The contents by which a deleted row and a live one are known to be the same: one that they have
/// in common is enough. A row without content has none.
///
/// Messages: the GUID; without one, text and time. Contacts: names and one number or mail address.
/// Calls: number, time and duration. WhatsApp: text and time. Notes: title and creation date.
/// Events: the identifier; without one, summary, start and end. Pictures: the file. Visits:
/// address and time.
enum class RowSide : std::uint8_t { Live, Deleted };
using Contents = std::vector<std::string>;
Contents contentsOf(const SMS& row, RowSide side);
Contents contentsOf(const Contact& row, RowSide side);
Contents contentsOf(const CallLog& row, RowSide side);
Contents contentsOf(const WhatsApp& row, RowSide side);
Contents contentsOf(const Note& row, RowSide side);
Contents contentsOf(const Calendar& row, RowSide side);
Contents contentsOf(const Photo& row, RowSide side);
Contents contentsOf(const Video& row, RowSide side);
Contents contentsOf(const InternetHistory& row, RowSide side);

/// For each deleted row the `SlNo` of the first live row that is the same, 0 without one. Rows of
/// lists without serial numbers are numbered by their place from 1. Costs memory for the deleted
/// rows alone.
template <class Row>
std::vector<std::int32_t> liveTwins(const List<Row>& live, const List<Row>& deleted);

}  // namespace salvor
