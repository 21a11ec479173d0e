// Operations that no scan calls.
#include <algorithm>
#include <fmt/format.h>
#include <iterator>

#include "carving/format/SQLiteUtils.h"
#include "recovery/AbstractSqLiteRecovery.h"

namespace salvor {
namespace {

constexpr std::size_t kUuidLength = 36;

bool isUuidDash(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

}  // namespace

List<baseRecoveryObject> AbstractSqLiteRecovery::FindAll(const baseRecoveryObject& record) const {
    List<baseRecoveryObject> found;
    std::copy_if(RecoveredFiltered.begin(), RecoveredFiltered.end(), std::back_inserter(found),
                 [&record](const auto& one) { return one && one->RowId == record.RowId; });
    return found;
}

std::optional<SQLiteTableHeaderInfo> AbstractSqLiteRecovery::FindSQLiteTableHeader(
    Bytes data, std::int64_t offset) const {
    return findHeader(tablePatterns, data, offset);
}

std::optional<SQLiteTableHeaderInfo> AbstractSqLiteRecovery::findHeader(
    const TablePatterns& patterns, Bytes data, std::int64_t offset) {
    PatternMatcher matcher;
    matcher.use(patterns);
    matcher.begin(data);
    SQLiteTableHeaderInfo info;
    if (matcher.find(offset, info) == MatchResult::ReadFailed) return std::nullopt;
    return info;
}

RegionEnd AbstractSqLiteRecovery::ParseHeaderAndData(Bytes data, std::int64_t start) {
    Region region{data};
    region.start = start;
    return engine_.ParseHeaderAndData(tablePatterns, region);
}

std::optional<std::uint16_t> AbstractSqLiteRecovery::convertToint16fromData(Bytes data,
                                                                            std::size_t location) {
    return SQLiteUtils::convertToint16fromData(data, location);
}

bool AbstractSqLiteRecovery::IsGuidAscii(std::uint8_t byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z');
}

bool AbstractSqLiteRecovery::IsChatGuidAsciiValue(std::uint8_t byte) {
    return IsGuidAscii(byte) || byte == '+' || byte == '@' || byte == ';' || byte == '-';
}

bool AbstractSqLiteRecovery::IsGuidAsciiValue(Bytes data) {
    if (data.size() < kUuidLength) return false;
    for (std::size_t i = 0; i < kUuidLength; ++i) {
        if (isUuidDash(i) ? data[i] != '-' : !IsGuidAscii(data[i])) return false;
    }
    return true;
}

std::int64_t AbstractSqLiteRecovery::FindIndexOfBytesForGuidDataContent(Bytes data,
                                                                        std::int64_t offset) {
    const auto last =
        static_cast<std::int64_t>(data.size()) - static_cast<std::int64_t>(kUuidLength);
    for (std::int64_t at = std::max<std::int64_t>(offset, 0); at <= last; ++at) {
        if (IsGuidAsciiValue(data.subspan(static_cast<std::size_t>(at)))) return at;
    }
    return -1;
}

std::string AbstractSqLiteRecovery::getStringFromValue(const ColumnValue& value) {
    return std::visit([](const auto& one) { return fmt::format("{}", one); }, value);
}

std::optional<std::uint8_t> AbstractSqLiteRecovery::firstByte(Bytes data) {
    if (data.empty()) return std::nullopt;
    return data.front();
}

std::int32_t AbstractSqLiteRecovery::headerSize(const HeaderPattern& header) {
    std::int32_t sum = 0;
    std::int32_t bytes = 0;
    for (const auto& codes : header) {
        if (!codes.empty()) {
            bytes = std::any_of(codes.begin(), codes.end(), [](auto code) { return code < 11; })
                        ? 1
                        : 2;
        }
        sum += bytes;
    }
    return sum;
}

bool AbstractSqLiteRecovery::processContent(std::int64_t size, std::int64_t& found,
                                            std::int64_t offset, Bytes data) const {
    found = size;
    const auto info = FindSQLiteTableHeader(data, offset);
    if (!info || !info->Valid) return false;
    const std::int64_t distance = info->HeaderStartIndex - offset;
    found = std::min(distance, size);
    return distance < size;
}

std::string AbstractSqLiteRecovery::ConnectionStringForSQLiteConnection(const std::string& path) {
    return "data source=" + path;
}

}  // namespace salvor
