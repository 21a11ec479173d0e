#include "tools/sample/ManifestWriter.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

plist_t textNode(const std::string& text) {
    return plist_new_string(text.c_str());
}

plist_t dataNode(const std::string& bytes) {
    return plist_new_data(bytes.data(), bytes.size());
}

/// An archive under construction: objects get the numbers in which they are added.
class Archive {
  public:
    Archive() { plist_array_append_item(objects_, textNode("$null")); }

    plist_t add(plist_t object) {
        plist_array_append_item(objects_, object);
        return plist_new_uid(plist_array_get_size(objects_) - 1);
    }
    plist_t addHolder(const char* key, plist_t value, const char* className) {
        plist_t holder = plist_new_dict();
        plist_dict_set_item(holder, key, value);
        plist_dict_set_item(holder, "$class", addClass(className));
        return add(holder);
    }
    plist_t addClass(const char* name) {
        plist_t described = plist_new_dict();
        plist_t classes = plist_new_array();
        for (const char* each : {name, "NSObject"})
            plist_array_append_item(classes, textNode(each));
        plist_dict_set_item(described, "$classes", classes);
        plist_dict_set_item(described, "$classname", textNode(name));
        return add(described);
    }
    /// Ends the archive, whose root is the object 1.
    std::string bytes() {
        const std::unique_ptr<void, decltype(&plist_free)> root(plist_new_dict(), plist_free);
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(1));
        plist_dict_set_item(root.get(), "$version", plist_new_uint(100'000));
        plist_dict_set_item(root.get(), "$archiver", textNode("NSKeyedArchiver"));
        plist_dict_set_item(root.get(), "$top", top);
        plist_dict_set_item(root.get(), "$objects", objects_);
        char* written = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(root.get(), &written, &length);
        const std::unique_ptr<char, decltype(&std::free)> owned(written, &std::free);
        return {written, length};
    }

  private:
    plist_t objects_ = plist_new_array();
};

std::int64_t flagsOf(const MbdbRecord& record) {
    const std::uint32_t type = record.mode & 0170000U;
    return type == 0040000 ? 2 : type == 0120000 ? 4 : 1;
}

}  // namespace

std::string fileArchive(const MbdbRecord& record, bool inPlace) {
    Archive archive;
    plist_t file = plist_new_dict();
    archive.add(file);
    const std::pair<const char*, std::uint64_t> numbers[] = {
        {"LastModified", record.modified},
        {"LastStatusChange", record.statusChanged},
        {"Birth", record.born},
        {"Size", record.size},
        {"Mode", record.mode},
        {"UserID", record.userId},
        {"GroupID", record.groupId},
        {"InodeNumber", record.inode},
        {"Flags", 0},
        {"ProtectionClass", record.protectionClass}};
    for (const auto& [key, value] : numbers) plist_dict_set_item(file, key, plist_new_uint(value));
    plist_dict_set_item(file, "RelativePath", archive.add(textNode(record.path)));
    if (record.digest) plist_dict_set_item(file, "Digest", archive.add(dataNode(*record.digest)));
    if (record.encryptionKey)
        plist_dict_set_item(file, "EncryptionKey",
                            inPlace ? dataNode(*record.encryptionKey)
                                    : archive.addHolder("NS.data", dataNode(*record.encryptionKey),
                                                        "NSMutableData"));
    if (record.linkTarget)
        plist_dict_set_item(
            file, "Target",
            inPlace ? archive.add(textNode(*record.linkTarget))
                    : archive.addHolder("NS.string", textNode(*record.linkTarget), "NSString"));
    plist_dict_set_item(file, "$class", archive.addClass("MBFile"));
    return archive.bytes();
}

void writeManifestDatabase(const std::filesystem::path& file,
                           const std::vector<MbdbRecord>& records) {
    SqliteFile database(file, {4096, AutoVacuum::Incremental, false, false});
    database.execute("PRAGMA user_version=2");
    database.execute(
        "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags "
        "INTEGER, file BLOB)");
    database.execute("CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB)");
    for (const char* column : {"domain", "relativePath", "flags"})
        database.execute(std::string("CREATE INDEX Files") + column + "Idx ON Files(" + column +
                         ")");
    database.execute("BEGIN");
    bool inPlace = false;
    for (const auto& record : records) {
        database.insert("Files",
                        {sampleStoredName(record.domain, record.path), record.domain, record.path,
                         flagsOf(record), SqliteBlob{fileArchive(record, inPlace)}});
        inPlace = !inPlace;
    }
    database.execute("COMMIT");
    database.close();
}

}  // namespace salvor
