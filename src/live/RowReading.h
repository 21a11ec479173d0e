#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "records/List.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// What a record takes besides its texts: itself and its places on the lists of a scan.
template <class Record>
inline constexpr std::size_t roomOf = sizeof(Record) + 3 * sizeof(std::shared_ptr<Record>);

/// A record for every row of `rows`, filled by `fill(row, record)`.
template <class Record, class Fill>
List<Record> readRows(ResultSet rows, Fill&& fill) {
    List<Record> list;
    rows.keepsOfEachRow(roomOf<Record>);
    while (rows.next()) {
        auto record = std::make_shared<Record>();
        fill(std::as_const(rows), *record);
        list.push_back(std::move(record));
    }
    return list;
}

/// Numbers the rows of a list from 1.
template <class Record>
void numberRows(const List<Record>& list) {
    std::int32_t number = 0;
    for (const auto& record : list) record->SlNo = ++number;
}

template <class Record>
void append(List<Record>& all, const List<Record>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

}  // namespace salvor
