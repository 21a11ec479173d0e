#include "report/JsonStream.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "util/TerminalText.h"

namespace salvor::json {
namespace {

// The library knows all of JSON's texts and numbers; what most records hold is written without it.
std::string dump(const nlohmann::json& value) {
    return escapedForTerminals(
        value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

bool isPlain(char c) {
    return c >= ' ' && c < '\x7F' && c != '"' && c != '\\';
}

}  // namespace

void JsonStream::text(std::string_view value) {
    if (!std::all_of(value.begin(), value.end(), isPlain)) return raw(dump(value));
    buffer_ += '"';
    buffer_ += value;
    raw("\"");
}

void JsonStream::real(double value) {
    constexpr double kWhole = 1e15;  // below it whole numbers are written without an exponent
    const bool whole = std::abs(value) < kWhole && value == std::trunc(value);
    if (!whole || std::signbit(value)) return raw(dump(value));
    raw(fmt::format_int(static_cast<long long>(value)).c_str());
    raw(".0");
}

void JsonStream::key(const char* name, bool& first) {
    if (!first) buffer_ += ',';
    first = false;
    buffer_ += '"';
    buffer_ += name;
    buffer_ += "\":";
}

void JsonStream::flush() {
    // Asked before the write: a stop that comes with the last piece leaves a text that is whole.
    ended_ = ended_ || stop_.stop_requested();
    if (!ended_) out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    buffer_.clear();
    ended_ = ended_ || !out_;
}

}  // namespace salvor::json
