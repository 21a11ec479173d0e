#include "carving/RowCollector.h"

#include <algorithm>

#include "carving/DataPosition.h"

namespace salvor {

void RowCollector::rowBegins(std::int64_t rowId, const RecordOrigin& origin) {
    row_.columns.clear();
    row_.rowId = rowId;
    row_.origin = origin;
}

void RowCollector::columnRead(std::int64_t number, const OptionalColumnValue& value,
                              const TablePattern& pattern) {
    const AttributesMapping* mapping = pattern.mappingForColumn(number);
    if (mapping == nullptr) return;
    field_ = mapping->Name;
    auto& columns = row_.columns;
    const auto known = std::find_if(columns.begin(), columns.end(), [mapping](const auto& one) {
        return one.first == mapping->Name;
    });
    if (known == columns.end()) {
        columns.emplace_back(mapping->Name, value);
    } else {
        known->second = value;
    }
}

std::int32_t RowCollector::correctionFor(Bytes text) {
    return standardDataPosition(field_, text);
}

void RowCollector::rowEnds() {
    if (rowIds_ == RowIds::Every || known_.insert(row_.rowId).second) found_(row_);
}

}  // namespace salvor
