#pragma once

#include "records/ColumnValue.h"
#include "records/Message.h"

namespace salvor {

// Setters for the time columns of a carved message, in seconds since the iOS reference date. Each
// keeps the raw number beside the display text. A value that did not decode leaves the text absent.

/// The text is empty when the number is no date.
void storeMessageDate(Message& message, const OptionalColumnValue& value);
/// The text is empty for the reference date itself, the date when it lies in the future, and else a
/// single blank.
void storeMessageDateRead(Message& message, const OptionalColumnValue& value);
/// As for the read date, but the empty text goes into the read date and leaves the delivered one
/// alone. Kept: delivered-empties-read.
void storeMessageDateDelivered(Message& message, const OptionalColumnValue& value);

}  // namespace salvor
