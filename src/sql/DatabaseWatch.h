#pragma once

#include <cstdint>
#include <string>

namespace salvor {

/// How the reading of a database came to an end, at one statement of it.
struct ReadingEnd {
    enum class Kind : std::uint8_t {
        Whole,        ///< the statement handed out all its rows
        NotOpened,    ///< SQLite does not open the file
        NotPrepared,  ///< the statement names what the database lacks
        Broken,       ///< SQLite could not read on: no database, damaged, an error of the disk
        Budget,       ///< a budget of the connection was spent
    };
    Kind kind = Kind::Whole;
    std::string reason;      ///< SQLite's own message, or which budget was spent
    std::uint64_t rows = 0;  ///< that the statement had handed out
};

/// Learns how the statements of a connection end, on the thread that runs them. A statement that a
/// cancel ends, or that nobody steps to its end, is not told.
class DatabaseWatch {
  public:
    DatabaseWatch() = default;
    DatabaseWatch(const DatabaseWatch&) = delete;
    DatabaseWatch& operator=(const DatabaseWatch&) = delete;
    virtual ~DatabaseWatch() = default;

    virtual void readingEnded(const ReadingEnd& end) = 0;
};

}  // namespace salvor
