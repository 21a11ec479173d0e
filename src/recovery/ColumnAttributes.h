#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "records/ColumnValue.h"
#include "util/Date.h"
#include "util/Text.h"

namespace salvor {

/// How one attribute name of the signatures file fills a record. A carver lists its names in a
/// table of these; a name that the table lacks fills nothing.
template <class Record>
struct ColumnAttribute {
    std::string_view name;
    void (*store)(Record&, const OptionalColumnValue&);
};

/// Stores `value` under `name`, if the table has that name.
template <class Record>
void storeColumn(std::span<const ColumnAttribute<Record>> table, std::string_view name,
                 Record& record, const OptionalColumnValue& value) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const auto& attribute) { return attribute.name == name; });
    if (found != table.end()) found->store(record, value);
}

// What a carved value becomes in a field of another kind. An absent value gives absent or 0.

/// A number becomes its decimal text: a double the shortest that reads back.
Text columnText(const OptionalColumnValue& value);
/// A text becomes its leading digits, else 0; a double is cut towards 0. What 64 bits cannot hold
/// becomes the nearest number that they can.
std::int64_t columnInteger(const OptionalColumnValue& value);
double columnDouble(const OptionalColumnValue& value);
/// A number of seconds since 2001; absent also for a value that did not decode, which is not 2001.
/// Kept: undecoded-date-is-absent.
std::optional<Date> columnDate(const OptionalColumnValue& value);

/// Setters for the usual kinds of fields: `storeText<&Message::Guid>`.
template <auto Member, class Record>
void storeText(Record& record, const OptionalColumnValue& value) {
    record.*Member = columnText(value);
}

template <auto Member, class Record>
void storeInteger(Record& record, const OptionalColumnValue& value) {
    record.*Member = columnInteger(value);
}

template <auto Member, class Record>
void storeBool(Record& record, const OptionalColumnValue& value) {
    record.*Member = columnInteger(value) != 0;
}

}  // namespace salvor
