#pragma once

namespace salvor::cli {

/// The exit statuses of the program, one per cause. Scripts depend on the numbers.
enum class ExitStatus {
    Done = 0,
    Failed = 1,  ///< an exception: a fault of the program, or no memory
    BadArguments = 2,
    SourceUnusable = 3,  ///< no such folder or file, unreadable, property lists missing
    Encrypted = 4,       ///< the manifest marks the backup as encrypted
    NotWritten = 5,      ///< work folder, export folder, JSON file or standard output
    NoDevice = 6,    ///< no multiplexer daemon, no such device, not trusted, or the backup failed
    NotAllRead = 7,  ///< done, but a database asked for or a picture could not be read whole
    Cancelled = 130,
};

}  // namespace salvor::cli
