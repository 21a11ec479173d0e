// The binary index of a backup.
#include "backup/ParseMbdb.h"
#include "fuzz/Target.h"

using namespace salvor;

SALVOR_FUZZ_TARGET(mbdb) {
    constexpr std::size_t kSmallestRecord = 5 * 2 + 40;
    std::size_t records = 0;
    std::size_t texts = 0;
    std::int64_t end = 0;
    const auto read = ParseMbdb::visit(input, [&](MDFileInfo&& info) {
        ++records;
        fuzz::expect(info.StartOffset >= end, "records follow each other");
        end = info.StartOffset + static_cast<std::int64_t>(kSmallestRecord);
        fuzz::expect(info.strHash.size() == 40, "a stored name has 40 digits");
        fuzz::expect(info.strHash == ParseMbdb::storedName(info.Domain, info.FileName),
                     "a stored name follows from domain and path");
        texts += info.Domain.size() + info.FileName.size() + info.strlinkTarget.size();
        if (!info.dicProperties) return;
        fuzz::expect(info.dicProperties->size() <= info.intNumberofProps, "no more than counted");
    });
    fuzz::expect(read != ParseMbdb::End::NoIndex || records == 0, "no index, no records");
    fuzz::expect(records * kSmallestRecord <= input.size(), "records have their size");
    // A text that is no UTF-8 reads "<null>", six characters for as little as one byte.
    fuzz::expect(texts <= 6 * input.size(), "texts come from the file");
}
