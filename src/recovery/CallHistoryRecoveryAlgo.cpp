#include "recovery/CallHistoryRecoveryAlgo.h"

#include <charconv>

#include "scan/StoredNames.h"
#include "util/DateUtils.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr std::size_t kFirstOffset = 32;
constexpr std::size_t kHeaderBytes = 18;
constexpr std::uint8_t kTwoByteVarint = 129;

/// What the header says of one column.
struct Column {
    std::size_t length = 0;
    Text value;  ///< a constant that the header holds
    std::size_t headerBytes = 1;
};

struct Number {
    std::int64_t value = 0;
    std::size_t bytes = 1;
};

/// The variable-length integer that ends in front of `end`: of two bytes when the first of these
/// is 129 or more, of one when it is 128 or less.
Number numberBefore(Bytes store, std::size_t end) {
    if (end >= 2 && store[end - 2] >= kTwoByteVarint)
        return {CommanFunctions::GetRowID(store[end - 2], store[end - 1]), 2};
    return end >= 1 ? Number{store[end - 1], 1} : Number{};
}

// Any other type is its own length. Kept: scanner-lengths.
Column integerColumn(std::uint8_t type) {
    if (type == 8) return {0, "0", 1};
    if (type == 9) return {0, "1", 1};
    return {type, std::nullopt, 1};
}

Column timestampColumn(std::uint8_t type) {
    if (type == 7) return {8, std::nullopt, 1};
    return integerColumn(type);
}

std::optional<Column> textColumn(Bytes store, std::size_t offset) {
    if (offset >= store.size()) return std::nullopt;
    Column column;
    std::int64_t type = store[offset];
    if (store[offset] >= kTwoByteVarint) {
        if (store.size() - offset < 2) return std::nullopt;
        type = CommanFunctions::GetRowID(store[offset], store[offset + 1]);
        column.headerBytes = 2;
    }
    if (type >= 13) column.length = static_cast<std::size_t>((type - 13) / 2);
    return column;
}

std::optional<Column> readColumn(Bytes store, std::size_t offset, CallLogRecord::Type type) {
    if (type == CallLogRecord::Type::String) return textColumn(store, offset);
    if (offset >= store.size()) return std::nullopt;
    return type == CallLogRecord::Type::Timestamp ? timestampColumn(store[offset])
                                                  : integerColumn(store[offset]);
}

// As Unix seconds, also of a floating-point date. Kept: scanner-lengths.
Text timestampText(Bytes bytes) {
    const auto seconds =
        CommanFunctions::ParseIntegerValueFromBytes(bytes.size() > 4 ? bytes.first(4) : bytes);
    const auto date = DateUtils::ConvertFromUnixTimeStampToDateTime(static_cast<double>(seconds));
    return date ? Text(DateUtils::DateTimeToIso8601(*date)) : std::nullopt;
}

Text valueText(Bytes bytes, CallLogRecord::Type type) {
    switch (type) {
        case CallLogRecord::Type::String:
            return StringUtils::BytesToString(bytes);
        case CallLogRecord::Type::Timestamp:
            return timestampText(bytes);
        default:
            return std::to_string(CommanFunctions::ParseIntegerValueFromBytes(bytes));
    }
}

std::int64_t numberOf(const Text& text) {
    std::int64_t number = 0;
    if (text) std::from_chars(text->data(), text->data() + text->size(), number);
    return number;
}

// Kept: scanner-crosswise.
const char* callTypeText(const CallLog& call) {
    const bool placed = call.CallMode == "1";
    if (call.CallType) return placed ? "Outgoing Call -Answered" : "Outgoing Call -Not answered";
    return placed ? "Incoming Call -Answered" : "Incoming Call -Not answered";
}

}  // namespace

const Text& ScannedCall::value(std::string_view column) const {
    static const Text kAbsent;
    const auto& schema = CallLogRecord::ZCALLRECORDSchema;
    for (std::size_t i = 0; i < schema.size(); ++i)
        if (schema[i].name == column) return values[i];
    return kAbsent;
}

std::int64_t CommanFunctions::GetRowID(std::uint8_t first, std::uint8_t second) {
    return (first & 127) * 128 + second;
}

std::int64_t CommanFunctions::ParseIntegerValueFromBytes(Bytes bytes) {
    std::uint64_t value = 0;
    for (const auto byte : bytes.first(std::min<std::size_t>(bytes.size(), 8)))
        value = value << 8 | byte;
    return static_cast<std::int64_t>(value);
}

CallHistoryRecoveryAlgo::CallHistoryRecoveryAlgo(ScanState& state) : state_(state), daos_(state) {
    state_.DeletedCallLog.clear();
}

void CallHistoryRecoveryAlgo::getBufferFromHaxFile() {
    const auto store = state_.backupFiles()->open(CallHistoryIOS8SqliteDbName);
    file_ = store ? MappedFile::open(store.path) : std::nullopt;
}

std::optional<ScannedCall> CallHistoryRecoveryAlgo::scanRecord(Bytes store, std::size_t offset) {
    const auto& schema = CallLogRecord::ZCALLRECORDSchema;
    if (offset < 2 || offset >= store.size()) return std::nullopt;
    std::array<Column, 17> columns;
    std::size_t position = offset + 1;
    for (std::size_t i = 0; i < schema.size(); ++i) {
        const auto column = readColumn(store, position, schema[i].type);
        if (!column) return std::nullopt;
        columns[i] = *column;
        position += column->headerBytes;
    }
    ScannedCall call;
    for (std::size_t i = 0; i < schema.size(); ++i) {
        call.values[i] = columns[i].value;
        if (columns[i].length == 0 || columns[i].value) continue;
        if (position > store.size() || columns[i].length > store.size() - position)
            return std::nullopt;
        call.values[i] = valueText(store.subspan(position, columns[i].length), schema[i].type);
        position += columns[i].length;
    }
    const Number rowId = numberBefore(store, offset);
    call.values[0] = std::to_string(rowId.value);
    call.payloadLength = numberBefore(store, offset - rowId.bytes).value;
    return call;
}

void CallHistoryRecoveryAlgo::fetchCallHistoryFrom_ZCALLRECORD_Table() {
    if (!file_ || file_->bytes().size() <= kHeaderBytes) return;
    const auto store = file_->bytes();
    const std::size_t end = store.size() - kHeaderBytes;
    for (std::size_t offset = kFirstOffset; offset < end; ++offset) {
        if (store[offset] != kHeaderBytes || store[offset + 1] != 0) continue;
        const auto call = scanRecord(store, offset);
        if (!call) continue;
        offset += kHeaderBytes - 1;
        const auto rowId = numberOf(call->values[0]);
        if (rowId < 1 || daos_.isDeletedZCALLRECORD(rowId)) continue;
        state_.DeletedCallLog.push_back(toCallLog(*call));
    }
    state_.DeletedCallLogCount = static_cast<std::int32_t>(state_.DeletedCallLog.size());
}

std::shared_ptr<CallLog> CallHistoryRecoveryAlgo::toCallLog(const ScannedCall& call) {
    auto row = std::make_shared<CallLog>();
    row->SlNo = static_cast<std::int32_t>(numberOf(call.value("Z_PK")));
    row->Address = call.value("ZADDRESS");
    row->PhoneNumber = row->Address;
    row->LocalTime = call.value("ZDATE");
    row->CallType = call.value("ZCALLTYPE");
    row->CallDuration = static_cast<std::int32_t>(numberOf(call.value("ZDURATION")));
    row->CallMode = call.value("ZORIGINATED");
    row->isChecked = 0;
    row->CallType = callTypeText(*row);
    return row;
}

}  // namespace salvor
