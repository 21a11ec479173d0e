#pragma once

#include <tuple>

namespace salvor {

/// Name and place of one field of a record. Each record class lists its fields once, in
/// `static constexpr auto fields()`, and whatever writes records by field name (JSON, tests)
/// walks that list. The list is a template so that only the files that walk it pay for its tuple.
template <class Record, class Value>
struct Field {
    const char* name;
    Value Record::*member;
};

template <class Record, class Value>
constexpr Field<Record, Value> field(const char* name, Value Record::*member) {
    return {name, member};
}

/// Calls `visit(name, value)` for every field of `record`, in declaration order.
template <class Record, class Visitor>
void forEachField(Record& record, Visitor&& visit) {
    std::apply([&](const auto&... one) { (visit(one.name, record.*(one.member)), ...); },
               std::remove_cv_t<Record>::fields());
}

}  // namespace salvor
