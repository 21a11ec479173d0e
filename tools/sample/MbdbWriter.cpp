#include "tools/sample/MbdbWriter.h"

#include <string_view>

namespace salvor {
namespace {

void putInteger(std::string& out, std::uint64_t value, unsigned bytes) {
    for (unsigned i = bytes; i > 0; --i) {
        out += static_cast<char>(static_cast<unsigned char>(value >> (8U * (i - 1))));
    }
}

void putString(std::string& out, std::string_view text) {
    putInteger(out, text.size(), 2);
    out += text;
}

void putString(std::string& out, const std::optional<std::string>& text) {
    if (text) {
        putString(out, std::string_view(*text));
    } else {
        putInteger(out, 0xFFFF, 2);
    }
}

void putRecord(std::string& out, const MbdbRecord& record) {
    putString(out, std::string_view(record.domain));
    putString(out, std::string_view(record.path));
    putString(out, record.linkTarget);
    putString(out, record.digest);
    putString(out, record.encryptionKey);
    putInteger(out, record.mode, 2);
    putInteger(out, record.inode, 8);
    putInteger(out, record.userId, 4);
    putInteger(out, record.groupId, 4);
    putInteger(out, record.modified, 4);
    putInteger(out, record.statusChanged, 4);
    putInteger(out, record.born, 4);
    putInteger(out, record.size, 8);
    putInteger(out, record.protectionClass, 1);
    putInteger(out, record.properties.size(), 1);
    for (const auto& [name, value] : record.properties) {
        putString(out, std::string_view(name));
        putString(out, std::string_view(value));
    }
}

}  // namespace

std::string mbdbBytes(const std::vector<MbdbRecord>& records) {
    std::string out("mbdb\x05\x00", 6);
    for (const auto& record : records) putRecord(out, record);
    return out;
}

}  // namespace salvor
