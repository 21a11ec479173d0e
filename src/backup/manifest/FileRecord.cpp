#include "backup/manifest/FileRecord.h"

#include "util/KeyedArchive.h"

namespace salvor {
std::optional<EntryDetails> readFileRecord(Bytes archive) {
    const auto root = KeyedArchive::parse(archive);
    if (!root) return std::nullopt;
    const auto number = [&root](const char* key) { return root.at(key).integer().value_or(0); };
    EntryDetails details;
    details.mode = static_cast<std::uint32_t>(number("Mode"));
    details.size = number("Size");
    details.modified = number("LastModified");
    details.changed = number("LastStatusChange");
    details.born = number("Birth");
    details.protectionClass = static_cast<std::uint32_t>(number("ProtectionClass"));
    details.linkTarget = root.at("Target").text();
    details.key =
        keyWithClass(root.at("EncryptionKey").data().value_or(""), details.protectionClass);
    return details;
}

}  // namespace salvor
