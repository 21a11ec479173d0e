#pragma once

#include <array>
#include <string_view>

namespace salvor {

/// The columns of the iOS 8 call table, in the order in which the carver reads them.
struct CallLogRecord {
    enum class Type { Integer = 1, Float = 2, String = 3, Timestamp = 4 };
    struct Column {
        std::string_view name;
        Type type;
    };
    static const std::array<Column, 17> ZCALLRECORDSchema;
};

}  // namespace salvor
