#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "bench/recall/LinkFigures.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {

/// What became of the deleted rows of one kind of free space.
struct RecallCount {
    std::size_t present = 0;  ///< rows of which a copy of the first columns lies in the file
    std::size_t exact = 0;    ///< listed with exactly their text
    std::size_t damaged = 0;  ///< listed, but with another text
    void add(const RecallCount& other);
};

/// The figures of one database, or of several added up.
struct RecallFigures {
    std::size_t deleted = 0;  ///< deleted rows with a text
    std::size_t gone = 0;     ///< of these, nothing is left in the file
    std::size_t live = 0;     ///< live rows with a text
    std::map<std::string, RecallCount> bySpace;
    std::size_t rowIdsRight = 0;  ///< of the exact ones
    std::size_t liveListed = 0;   ///< live rows in the list of deleted ones
    std::size_t otherListed = 0;  ///< listed, but neither a deleted nor a live row
    LinkFigures links;
    void add(const RecallFigures& other);
};

/// Runs the carvers of a scan over the messages of a sample and holds them against its truth.
RecallFigures measureRecall(const SampleBackup& sample,
                            std::shared_ptr<SqLiteTableSignatures> signatures);

}  // namespace salvor
