#include "sql/NewDatabase.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace salvor {
namespace {

std::string quoted(const std::string& name) {
    std::string out = "\"";
    for (const char c : name) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + '"';
}

int bind(sqlite3_stmt* statement, int place, const NewDatabase::Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return sqlite3_bind_int64(statement, place, *number);
    if (const auto* real = std::get_if<double>(&value))
        return sqlite3_bind_double(statement, place, *real);
    if (const auto* text = std::get_if<std::string>(&value))
        return sqlite3_bind_text64(statement, place, text->data(), text->size(), SQLITE_STATIC,
                                   SQLITE_UTF8);
    if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&value))
        return sqlite3_bind_blob64(statement, place,
                                   bytes->empty() ? "" : static_cast<const void*>(bytes->data()),
                                   bytes->size(), SQLITE_STATIC);
    return sqlite3_bind_null(statement, place);
}

}  // namespace

NewDatabase::NewDatabase(std::filesystem::path path) : path_(std::move(path)) {
    // Made here and now, so that nothing that comes into being meanwhile is written over.
    const int fd = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        throw std::runtime_error(path_.string() + ": " + std::generic_category().message(errno));
    ::close(fd);
    if (sqlite3_open_v2(path_.c_str(), &handle_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
        fail();
    execute("PRAGMA journal_mode=OFF");
    execute("PRAGMA synchronous=OFF");
    execute("BEGIN");
}

NewDatabase::~NewDatabase() {
    for (sqlite3_stmt* insert : inserts_) sqlite3_finalize(insert);
    sqlite3_close_v2(handle_);
    std::error_code ignored;
    if (!closed_ && handle_ != nullptr) std::filesystem::remove(path_, ignored);
}

void NewDatabase::fail() const {
    throw std::runtime_error(path_.string() + ": " + sqlite3_errmsg(handle_));
}

void NewDatabase::execute(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::size_t NewDatabase::addTable(const std::string& name, const std::vector<Column>& columns) {
    std::string list;
    std::string places;
    for (const Column& column : columns) {
        list += (list.empty() ? "" : ", ") + quoted(column.name);
        if (!column.type.empty()) list += ' ' + quoted(column.type);
        places += places.empty() ? "?" : ",?";
    }
    execute(fmt::format("CREATE TABLE {} ({})", quoted(name), list));
    const std::string insert = fmt::format("INSERT INTO {} VALUES ({})", quoted(name), places);
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle_, insert.c_str(), -1, &statement, nullptr) != SQLITE_OK) fail();
    inserts_.push_back(statement);
    return inserts_.size() - 1;
}

void NewDatabase::insert(std::size_t table, const std::vector<Value>& row) {
    sqlite3_stmt* statement = inserts_.at(table);
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    for (std::size_t i = 0; i < row.size(); ++i)
        if (bind(statement, static_cast<int>(i) + 1, row[i]) != SQLITE_OK) fail();
    if (sqlite3_step(statement) != SQLITE_DONE) fail();
    // The values are the caller's and go with this call.
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
}

void NewDatabase::close() {
    execute("COMMIT");
    closed_ = true;
}

}  // namespace salvor
