#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "plain_engine.h"
#include "plain_matcher.h"

namespace salvor::reference {

/// The bytes that are searched, and where they lie in the file.
struct Region {
    const Buffer& data;
    std::int64_t fileOffset;
    std::int64_t page;
    CarvedSpace space;
};

/// Decodes the record behind each header in a region. Its correction state and the name of the
/// field filled last outlive a region.
class PlainRecordLoop {
  public:
    PlainRecordLoop(const std::vector<PlainPattern>& patterns, const PlainOptions& options);

    std::vector<CarvedRow> rows;
    std::int64_t processOffset = 0;

    /// Throws `RangeFailure` where a read leaves the region.
    void parse(const Region& region, std::int64_t start);

  private:
    void readRecord(const Region& region, const MatchedHeader& header);
    void readColumn(const Buffer& data, std::int64_t type);
    void readNumber(const Buffer& data, std::int64_t type);
    void readBlob(const Buffer& data, std::int64_t length);
    void readText(const Buffer& data, std::int64_t length);
    void correctDataStart(const Buffer& text, bool whollyInside);
    void fillModel(const OptionalColumnValue& value);
    std::int64_t verifyDataPosition(const Buffer& text) const;
    void handOn(const Region& region, const MatchedHeader& header);
    void consume(std::int64_t length);

    PlainMatcher matcher_;
    PlainOptions options_;

    // Live as long as the carving.
    std::int64_t dataOffset_ = 0;
    bool dataReposition_ = false;
    bool dontAttemptAgain_ = false;
    std::optional<std::string> field_;

    // The record being read.
    CarvedRow row_;
    const PlainPattern* pattern_ = nullptr;
    std::int64_t column_ = 0;
    std::int64_t dataStart_ = 0;
    std::int64_t consumed_ = 0;
    bool secondReading_ = false;
    bool correctionApplied_ = false;
};

}  // namespace salvor::reference
