// The keyed archives in which newer backups tell of their files.
#include "backup/manifest/FileRecord.h"
#include "fuzz/Target.h"
#include "util/KeyedArchive.h"
#include "util/Utf8.h"

using namespace salvor;

SALVOR_FUZZ_TARGET(keyed_archive) {
    const auto root = KeyedArchive::parse(input);
    const auto record = readFileRecord(input);
    fuzz::expect(record.has_value() == static_cast<bool>(root), "a record has a root");
    if (!record) return;
    // A text in UTF-16 grows by half.
    fuzz::expect(record->linkTarget.view().size() <= 2 * input.size(), "texts come from the data");
    fuzz::expect(isValidUtf8(record->linkTarget.view()), "texts are UTF-8");
    fuzz::expect(record->key.size() <= input.size() + 4, "keys come from the data");
    for (const char* key :
         {"RelativePath", "Size", "Birth", "EncryptionKey", "$class", "NS.time"}) {
        const auto value = root.at(key);
        fuzz::expect(!value.text() || isValidUtf8(*value.text()), "texts are UTF-8");
        fuzz::expect(!(value.text() && value.integer()), "a value has one type");
        value.at(key).data();
    }
}
