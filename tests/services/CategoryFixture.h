#pragma once

#include <ctime>
#include <functional>
#include <vector>

#include "app/state/ScanState.h"
#include "carving/SqLiteTableSignatures.h"
#include "services/abstractServices.h"
#include "tests/services/database/DatabaseFixture.h"
#include "tools/sample/Digest.h"

namespace salvor {

/// A backup folder with the databases of one category, scanned with the shipped signatures.
class CategoryFixture : public DatabaseFixture {
  protected:
    struct DeletedRows {
        std::string columns;
        std::string rows;
    };

    CategoryFixture() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        state.BACKUP_DIRECTORY = folder.string();
        state.recoverySignatures = shippedSignatures();
        device.iOSMajorVersion = 7;
    }

    /// A database with live rows; of every entry of `deleted` the rows are left on a free page,
    /// the last one first. Only the first such page is sure to be searched to its end by
    /// patterns of few columns.
    void store(const std::string& name, const std::string& live,
               const std::vector<DeletedRows>& deleted = {}) const {
        // The second page is never examined, so a table that nobody looks at takes it.
        std::string script = "PRAGMA secure_delete=OFF; CREATE TABLE unused(x);" + live + ";";
        std::string drops;
        for (std::size_t i = 0; i < deleted.size(); ++i) {
            const auto table = "freed" + std::to_string(i);
            script += "CREATE TABLE " + table + deleted[i].columns + ";INSERT INTO " + table +
                      " VALUES" + deleted[i].rows + ";";
            drops += "DROP TABLE " + table + ";";
        }
        write(name, script + drops);
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

    /// "a|b|c", "-" for what is absent.
    static std::string joined(const std::vector<Text>& texts) {
        std::string line;
        for (const auto& text : texts) line += (line.empty() ? "" : "|") + text.value_or("-");
        return line;
    }

    ScanState state;
    DeviceInfo device;

  private:
    static std::shared_ptr<SqLiteTableSignatures> shippedSignatures() {
        static const auto shared = [] {
            auto signatures = std::make_shared<SqLiteTableSignatures>();
            const auto error = signatures->LoadLocalSignaturesFile(
                SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml");
            EXPECT_EQ(error, "");
            return signatures;
        }();
        return shared;
    }
};

}  // namespace salvor
