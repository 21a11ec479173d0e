#pragma once

#include <memory>
#include <utility>

#include "records/List.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// A record for every row of `rows`, filled by `fill(row, record)`.
template <class Record, class Fill>
List<Record> readRows(ResultSet rows, Fill&& fill) {
    List<Record> list;
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
