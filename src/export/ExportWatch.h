#pragma once

#include <cstddef>
#include <functional>
#include <stop_token>

namespace salvor {

/// How far an export is: rows of comma-separated files, and copies of pictures and videos.
struct ExportProgress {
    std::size_t rowsDone = 0;
    std::size_t rowsTotal = 0;
    std::size_t filesDone = 0;
    std::size_t filesTotal = 0;
};

/// What a caller has to do with an export that runs. Both are asked on the exporting thread, after
/// each row and each copy: `progress` must return quickly; once `cancelled` is stopped nothing
/// more is written and the file that is half written is removed.
struct ExportWatch {
    std::stop_token cancelled;
    std::function<void(const ExportProgress&)> progress;
    /// If set, nothing is written: the number of rows that would be is added.
    std::size_t* onlyCount = nullptr;
};

}  // namespace salvor
