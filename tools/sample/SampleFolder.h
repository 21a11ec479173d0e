#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/sample/MbdbWriter.h"
#include "tools/sample/SampleBackup.h"
#include "tools/sample/SampleKeys.h"
#include "tools/sample/SampleRandom.h"

namespace salvor {

/// What is fixed by the iOS version of a sample.
struct SampleDevice {
    int ios;
    const char* version;
    const char* build;
    const char* productType;
    std::int64_t startOfUse;  ///< Unix seconds
    AutoVacuum messageVacuum;
    bool writeAheadLog;
    bool secureDelete;
};

/// A sample backup while it is written: a category asks for the place of a stored file, fills it
/// and adds its rows to the truth. The index lists every file asked for.
class SampleFolder {
  public:
    SampleFolder(std::filesystem::path folder, const SampleOptions& options,
                 const SampleDevice& device);

    const SampleOptions& options() const { return options_; }
    const SampleDevice& device() const { return device_; }
    SampleRandom& random() { return random_; }
    SampleTruth& truth() { return truth_; }

    /// The path under which the file at `path` of `domain` is stored; its folder exists.
    std::filesystem::path add(const std::string& domain, const std::string& path);
    /// The path of a stored file whose place on the device nobody knows; the index lacks it.
    std::filesystem::path addUnlisted(const std::string& storedName) const;
    /// Property lists and index; called last.
    void finish();

  private:
    bool hasDatabaseIndex() const { return device_.ios >= kDatabaseIndex; }
    bool isNested() const { return options_.nested || hasDatabaseIndex(); }
    void writeInfo() const;
    void writeManifest(const std::string& manifestKey) const;
    void writeStatus() const;
    std::vector<MbdbRecord> describeFiles();
    /// Returns the wrapped key of the index, "" for one that is readable.
    std::string writeIndex();

    static constexpr int kDatabaseIndex = 10;

    std::filesystem::path folder_;
    SampleOptions options_;
    SampleDevice device_;
    SampleRandom random_;
    SampleTruth truth_;
    std::vector<MbdbRecord> index_;
    std::optional<SampleKeys> keys_;
};

/// Writes one category's databases.
using SampleCategory = void (*)(SampleFolder& folder);
void writeSampleMessages(SampleFolder& folder);
void writeSampleContacts(SampleFolder& folder);
void writeSampleCalls(SampleFolder& folder);
void writeSampleCalendar(SampleFolder& folder);
void writeSampleNotes(SampleFolder& folder);
void writeSampleNoteStore(SampleFolder& folder);
void writeSampleWhatsApp(SampleFolder& folder);
void writeSampleInternet(SampleFolder& folder);
void writeSampleLists(SampleFolder& folder);
void writeSamplePictures(SampleFolder& folder);

}  // namespace salvor
