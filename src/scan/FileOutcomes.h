#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/Category.h"
#include "scan/StoredNames.h"
#include "sql/DatabaseWatch.h"

namespace salvor {

class ScanState;

/// How much of a database a scan could read.
enum class ReadOutcome : std::uint8_t {
    Read,
    Partly,      ///< up to something that the reason names
    Unreadable,  ///< nothing
    Absent,      ///< it is not in the backup, or another place is read instead
    Locked,      ///< it is encrypted and there is no key
};

/// "read", "partly", "unreadable", "absent", "locked".
const char* toString(ReadOutcome outcome);

/// What became of one file of one category.
struct FileOutcome {
    Category category = Category::Messages;
    Stored file = Stored::Messages;
    ReadOutcome outcome = ReadOutcome::Absent;
    std::string reason;      ///< "" for what was read whole and what is simply not there
    bool present = false;    ///< as a regular file
    std::uint64_t size = 0;  ///< bytes, of a file that is present
};

/// Keeps for each file of the categories that a scan asks for whether it could be read. Files are
/// named by their stored names; what is said of a file that no category asked for owns is passed
/// over. Any thread may tell and ask.
class FileOutcomes {
  public:
    /// Forgets an earlier scan and looks at the files of the categories of `dataType`. Returns the
    /// faults that show without reading: no regular file, no byte in it.
    std::vector<FileOutcome> begin(const ScanState& state, std::int32_t dataType);

    /// How the reading of a file ended. Returns the outcome when it is the file's first fault.
    std::optional<FileOutcome> add(std::string_view storedName, const ReadingEnd& end);
    /// Something else than a single file kept a category from being whole: its files that are
    /// there count as read in part.
    void addFault(Category category, const std::string& reason);

    /// In the order of the categories and of their files. A file that nothing was heard of was not
    /// read to its end.
    std::vector<FileOutcome> all() const;
    /// The category's mark: `Partly` or `Unreadable`, or nothing without a fault.
    std::optional<ReadOutcome> faultOf(Category category) const;
    bool anyFault() const;

  private:
    struct Entry {
        FileOutcome told;
        bool heard = false;  ///< a statement has ended, or the file's bytes were searched
        bool fault = false;
        std::uint64_t rows = 0;  ///< that all statements have handed out
    };

    Entry* find(std::string_view storedName);

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
    std::vector<Category> asked_;
    std::vector<Category> faults_;  ///< of categories, not of their files
};

/// "messages: HomeDomain Library/SMS/sms.db (stored as 3d0d...): file is not a database; nothing
/// was read".
std::string describe(const FileOutcome& outcome);

}  // namespace salvor
