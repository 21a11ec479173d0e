#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "carving/RowReceiver.h"
#include "util/Text.h"

namespace salvor {

/// A carved row: its mapped columns in the order they were read, a later value of the same name
/// replacing an earlier one in place.
struct CarvedRow {
    std::int64_t rowId = 0;
    std::vector<std::pair<std::string, OptionalColumnValue>> columns;
    RecordOrigin origin;
};

/// A receiver without record classes: keeps every mapped column under its name and hands on whole
/// rows. Data starts are corrected by the common rule.
class RowCollector : public RowReceiver {
  public:
    enum class RowIds : std::uint8_t {
        FirstOnly,  ///< of rows with one row id only the first is handed on
        Every,
    };

    RowCollector(std::function<void(const CarvedRow&)> found, RowIds rowIds)
        : found_(std::move(found)), rowIds_(rowIds) {}

    void rowBegins(std::int64_t rowId, const RecordOrigin& origin) override;
    void columnRead(std::int64_t number, const OptionalColumnValue& value,
                    const TablePattern& pattern) override;
    std::int32_t correctionFor(Bytes text) override;
    void rowDropped() override {}
    void rowEnds() override;

  private:
    std::function<void(const CarvedRow&)> found_;
    RowIds rowIds_;
    std::unordered_set<std::int64_t> known_;
    CarvedRow row_;
    std::string_view field_;  ///< name of the column read last, of this row or an earlier one
};

}  // namespace salvor
