#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "util/Text.h"

namespace salvor {

/// Writes one comma-separated file in place, a new one for its owner alone: fields parted by the
/// delimiter, lines ended by a single line feed, UTF-8. A field that holds the delimiter, a double
/// quote, a backslash or a line break, or that begins with "#", stands in double quotes with its
/// own quotes doubled (Kept: more-quotes-than-needed). A file that cannot be created or written
/// swallows what follows; `close` tells the cause. The first field or line fixes the delimiter. Not
/// thread-safe.
class CsvWriter {
  public:
    explicit CsvWriter(const std::filesystem::path& path);
    CsvWriter(const CsvWriter&) = delete;
    CsvWriter& operator=(const CsvWriter&) = delete;
    ~CsvWriter();

    /// Sets the separator of fields; the text of the failure when it cannot be set.
    Text setDelimiter(const std::string& delimiter);
    void writeField(std::string_view field);
    void finishLine();
    /// Closes the file; "" or the cause of the first failure. Further calls repeat the answer.
    const std::string& close();

    /// The file was created, whatever happened to it later.
    bool created() const { return created_; }

  private:
    bool needsQuotes(std::string_view field) const;
    void put(std::string_view text);
    void fail(int error);

    std::FILE* file_ = nullptr;
    std::string delimiter_ = ",";
    std::string cause_;
    bool created_ = false;
    bool started_ = false;
    bool lineHasField_ = false;
};

}  // namespace salvor
