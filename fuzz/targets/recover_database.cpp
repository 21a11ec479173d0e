// The recovery by the schema over a database, its log and its journal. The last 8 bytes of the
// input say how long the log and the journal at its end are (4 bytes each, modulo what is there).
#include "carving/deep/RecoveryEngine.h"
#include "carving/format/BigEndian.h"
#include "fuzz/Target.h"

using namespace salvor;

namespace {

std::uint64_t sizeOf(ImageFile file, Bytes main, Bytes log, Bytes journal) {
    return (file == ImageFile::Main ? main : file == ImageFile::Wal ? log : journal).size();
}

}  // namespace

SALVOR_FUZZ_TARGET(recover_database) {
    constexpr std::size_t kTail = 8;
    constexpr std::size_t kLongest = std::size_t{1} << 20;
    if (input.size() < kTail || input.size() > kLongest) return;
    const Bytes files = input.first(input.size() - kTail);
    const std::size_t journalSize = bigEndian32(input, files.size()) % (files.size() + 1);
    const Bytes rest = files.first(files.size() - journalSize);
    const std::size_t logSize = bigEndian32(input, files.size() + 4) % (rest.size() + 1);
    const Bytes journal = files.last(journalSize);
    const Bytes log = rest.last(logSize);
    const Bytes main = rest.first(rest.size() - logSize);
    const auto store = PageStore::open({main, log, journal});
    if (!store) return;
    deep::RecoveryOptions options;
    options.live = options.fragments = true;
    deep::recoverRows(*store, options,
                      [&](const deep::Facts& facts, const deep::RecoveredRow& row) {
                          fuzz::expect(row.table < facts.tables.size(), "a row of no table");
                          for (const auto& column : row.columns)
                              fuzz::expect(column.column < facts.tables[row.table].columns.size(),
                                           "no such column");
                          for (const auto& place : row.origins)
                              fuzz::expect(place.offset < sizeOf(place.file, main, log, journal),
                                           "a row outside its file");
                          return true;
                      });
}
