#pragma once

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "backup/BackupSource.h"
#include "scan/ScanState.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {

using Texts = std::vector<std::string>;

/// A scan over a backup folder of its own, in UTC, whose databases the test writes as SQL.
class ScanFixture : public ::testing::Test {
  protected:
    struct DeletedRows {
        std::string columns;  ///< "(a, b)", as CREATE TABLE takes them
        std::string rows;     ///< "(1, 2), (3, 4)"
    };

    ScanFixture() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        useBackup(state, folder);
    }

    /// Runs `sql` on a database, which is made if need be. Deleted bytes stay where they are.
    std::string write(const std::string& name, const std::string& sql) const {
        std::string path = folder / name;
        SqliteFile file(path);
        file.execute("PRAGMA synchronous=OFF");
        file.execute(sql);
        file.close();
        return path;
    }

    /// Live rows; of every entry of `deleted` the rows are left whole on a free page, the last one
    /// first, as by a table that lost all of them. Only the first such page is sure to be searched
    /// to its end by patterns of few columns.
    void store(const std::string& name, const std::string& live,
               const std::vector<DeletedRows>& deleted = {}) const {
        // The second page is never examined, so a table that nobody looks at takes it.
        std::string script = "CREATE TABLE IF NOT EXISTS unused(x);" + live + ";";
        std::string drops;
        for (std::size_t i = 0; i < deleted.size(); ++i) {
            const auto table = "freed" + std::to_string(i);
            script += "CREATE TABLE " + table + deleted[i].columns + ";INSERT INTO " + table +
                      " VALUES" + deleted[i].rows + ";";
            drops += "DROP TABLE " + table + ";";
        }
        write(name, script);
        write(name, drops);
    }

    /// `run` over each kind of bad file in the place of `name`: it shall neither throw nor find.
    void overBadFiles(const std::string& name, const std::function<void()>& run) const {
        write("foreign", "CREATE TABLE IF NOT EXISTS other(x); INSERT INTO other VALUES(1)");
        const auto foreign = readWholeFile(folder / "foreign");
        run();
        for (const auto& bad : {std::string(), std::string("x"), std::string(9000, '\xFF'),
                                foreign.substr(0, 4000), foreign}) {
            SCOPED_TRACE("file of " + std::to_string(bad.size()) + " bytes");
            writeWholeFile(folder / name, bad);
            run();
        }
    }

    const TempFolder temporary;
    const std::filesystem::path folder = temporary.path();
    ScanState state;
};

}  // namespace salvor
