#include "export/CsvWriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "util/StringUtils.h"

namespace salvor {
namespace {

// U+0085, U+2028 and U+2029 break lines as the ASCII characters do.
constexpr std::string_view lineBreaks[] = {"\n",       "\r",           "\v",          "\f",
                                           "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

bool holdsLineBreak(std::string_view text) {
    return std::any_of(std::begin(lineBreaks), std::end(lineBreaks), [text](std::string_view one) {
        return text.find(one) != std::string_view::npos;
    });
}

}  // namespace

CsvWriter::CsvWriter(const std::filesystem::path& path) {
    constexpr mode_t kOwnerAlone = 0600;
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerAlone);
    if (file >= 0) file_ = ::fdopen(file, "w");
    created_ = file_ != nullptr;
    if (created_) return;
    fail(errno);
    if (file >= 0) ::close(file);
}

CsvWriter::~CsvWriter() {
    close();
}

Text CsvWriter::setDelimiter(const std::string& delimiter) {
    if (started_) return "You cannot set a delimiter after writing has started";
    if (delimiter.empty() || holdsLineBreak(delimiter)) {
        return delimiter + " cannot be used as a delimiter";
    }
    delimiter_ = delimiter;
    return std::nullopt;
}

void CsvWriter::writeField(std::string_view field) {
    started_ = true;
    if (lineHasField_) put(delimiter_);
    lineHasField_ = true;
    if (!needsQuotes(field)) return put(field);
    put("\"");
    put(StringUtils::replaceAll(field, "\"", "\"\""));
    put("\"");
}

void CsvWriter::finishLine() {
    started_ = true;
    lineHasField_ = false;
    put("\n");
}

const std::string& CsvWriter::close() {
    if (file_ != nullptr && std::fclose(std::exchange(file_, nullptr)) != 0) fail(errno);
    return cause_;
}

bool CsvWriter::needsQuotes(std::string_view field) const {
    return field.starts_with('#') || field.find_first_of("\"\\") != std::string_view::npos ||
           field.find(delimiter_) != std::string_view::npos || holdsLineBreak(field);
}

void CsvWriter::put(std::string_view text) {
    if (file_ == nullptr || text.empty()) return;
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail(errno);
}

void CsvWriter::fail(int error) {
    if (cause_.empty()) cause_ = std::generic_category().message(error);
}

}  // namespace salvor
