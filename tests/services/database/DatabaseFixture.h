#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace salvor {

/// A folder of its own for each test, with real databases made from SQL.
class DatabaseFixture : public ::testing::Test {
  protected:
    DatabaseFixture() {
        std::string name = (std::filesystem::temp_directory_path() / "salvor-db-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~DatabaseFixture() override { std::filesystem::remove_all(folder); }

    std::string write(const std::string& name, std::string_view sql) const {
        const std::string path = folder / name;
        sqlite3* db = nullptr;
        char* message = nullptr;
        EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        const std::string script = "PRAGMA synchronous = OFF;" + std::string(sql);
        EXPECT_EQ(sqlite3_exec(db, script.c_str(), nullptr, nullptr, &message), SQLITE_OK)
            << (message != nullptr ? message : "");
        sqlite3_free(message);
        sqlite3_close(db);
        return path;
    }

    std::filesystem::path folder;
};

}  // namespace salvor
