#include "sql/ResultSet.h"

#include <utility>

#include "sql/ResultSetImpl.h"
#include "util/Utf8.h"

namespace salvor {

int ResultSet::Impl::column(const std::string& name) const {
    if (!onRow) return -1;
    for (std::size_t index = names.size(); index-- > 0;) {
        const bool equal = names[index].size() == name.size() &&
                           sqlite3_stricmp(names[index].c_str(), name.c_str()) == 0;
        if (equal) return static_cast<int>(index);
    }
    return -1;
}

void ResultSet::Impl::rememberNames() {
    const int count = sqlite3_column_count(statement);
    for (int index = 0; index < count; ++index) {
        const char* name = sqlite3_column_name(statement, index);
        names.emplace_back(name != nullptr ? name : "");
    }
}

ResultSet::ResultSet() = default;
ResultSet::ResultSet(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
ResultSet::ResultSet(ResultSet&&) noexcept = default;
ResultSet& ResultSet::operator=(ResultSet&&) noexcept = default;
ResultSet::~ResultSet() = default;

bool ResultSet::next() {
    if (!impl_ || impl_->statement == nullptr || impl_->finished) return false;
    const int result = impl_->handle->step(impl_->statement, impl_->reading);
    impl_->onRow = result == SQLITE_ROW;
    if (impl_->onRow && impl_->names.empty()) impl_->rememberNames();
    impl_->finished = !impl_->onRow;  // a further step would run the statement again
    impl_->failed = impl_->finished && result != SQLITE_DONE;
    return impl_->onRow;
}

void ResultSet::keepsOfEachRow(std::size_t bytes) {
    if (impl_) impl_->reading.rowBytes = bytes;
}

std::uint64_t ResultSet::room() const {
    return impl_ && impl_->handle ? impl_->handle->room() : 0;
}

void ResultSet::takeRoom(std::uint64_t bytes) const {
    if (impl_ && impl_->handle) impl_->handle->takeRoom(bytes);
}

void ResultSet::close() {
    if (impl_) impl_->close();
}

bool ResultSet::hadError() const {
    return impl_ && impl_->failed;
}

Text ResultSet::stringForColumnIndex(int index) const {
    if (!impl_ || !impl_->onRow || index < 0 || index >= sqlite3_column_count(impl_->statement)) {
        return std::nullopt;
    }
    const auto* text = sqlite3_column_text(impl_->statement, index);
    if (text == nullptr) {
        // A blob of no bytes has no address; only NULL is absent.
        if (sqlite3_column_type(impl_->statement, index) != SQLITE_BLOB) return std::nullopt;
        return std::string();
    }
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(impl_->statement, index));
    std::string value(reinterpret_cast<const char*>(text), length);
    if (!isValidUtf8(value)) return std::nullopt;
    return value;
}

Text ResultSet::stringForColumn(const std::string& name) const {
    return impl_ ? stringForColumnIndex(impl_->column(name)) : std::nullopt;
}

std::int64_t ResultSet::longLongIntForColumn(const std::string& name) const {
    const int index = impl_ ? impl_->column(name) : -1;
    return index < 0 ? 0 : sqlite3_column_int64(impl_->statement, index);
}

std::int64_t ResultSet::longForColumn(const std::string& name) const {
    return longLongIntForColumn(name);
}

std::int32_t ResultSet::intForColumn(const std::string& name) const {
    return static_cast<std::int32_t>(longLongIntForColumn(name));
}

double ResultSet::doubleForColumn(const std::string& name) const {
    const int index = impl_ ? impl_->column(name) : -1;
    return index < 0 ? 0 : sqlite3_column_double(impl_->statement, index);
}

bool ResultSet::boolForColumn(const std::string& name) const {
    return intForColumn(name) != 0;
}

Text ResultSet::dataForColumn(const std::string& name) const {
    const int index = impl_ ? impl_->column(name) : -1;
    if (index < 0 || sqlite3_column_type(impl_->statement, index) == SQLITE_NULL) {
        return std::nullopt;
    }
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(impl_->statement, index));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(impl_->statement, index));
    return bytes == nullptr ? std::string() : std::string(bytes, length);
}

bool ResultSet::columnIsNull(const std::string& name) const {
    const int index = impl_ ? impl_->column(name) : -1;
    return index < 0 || sqlite3_column_type(impl_->statement, index) == SQLITE_NULL;
}

}  // namespace salvor
