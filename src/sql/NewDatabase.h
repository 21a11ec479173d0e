#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace salvor {

/// A database file that is written anew, in one transaction. Failures throw std::runtime_error
/// with file and cause. What is not closed is taken away again.
class NewDatabase {
  public:
    using Value =
        std::variant<std::monostate, std::int64_t, double, std::string, std::vector<std::uint8_t>>;
    struct Column {
        std::string name;
        std::string type;
    };

    /// An existing file is refused.
    explicit NewDatabase(std::filesystem::path path);
    NewDatabase(const NewDatabase&) = delete;
    NewDatabase& operator=(const NewDatabase&) = delete;
    ~NewDatabase();

    /// Makes a table and returns its number.
    std::size_t addTable(const std::string& name, const std::vector<Column>& columns);
    /// Columns without a value hold NULL.
    void insert(std::size_t table, const std::vector<Value>& row);
    /// Writes everything out.
    void close();

  private:
    void execute(const std::string& sql);
    [[noreturn]] void fail() const;

    std::filesystem::path path_;
    sqlite3* handle_ = nullptr;
    std::vector<sqlite3_stmt*> inserts_;
    bool closed_ = false;
};

}  // namespace salvor
