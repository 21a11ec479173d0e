// The CSV writer: what it writes reads back as the same fields.
#include <vector>

#include "export/CsvWriter.h"
#include "fuzz/Target.h"
#include "util/MappedFile.h"

using namespace salvor;

namespace {

using Lines = std::vector<std::vector<std::string>>;

// Zero bytes part fields and ones part lines; each line ends with a field of its own, so that no
// line is empty.
Lines linesOf(std::string_view text) {
    Lines lines{{""}};
    for (const char c : text) {
        if (c == '\0') {
            lines.back().emplace_back();
        } else if (c == '\1') {
            lines.emplace_back(1);
        } else {
            lines.back().back() += c;
        }
    }
    for (auto& line : lines) line.emplace_back("end");
    return lines;
}

// One field from the front of `rest`, which is left at its delimiter or line feed.
std::string readField(std::string_view& rest, char delimiter) {
    std::string field;
    if (!rest.starts_with('"')) {
        const char stops[] = {delimiter, '\n', '\0'};
        const auto end = std::min(rest.find_first_of(stops, 0, 2), rest.size());
        field = rest.substr(0, end);
        rest.remove_prefix(end);
        fuzz::expect(field.find_first_of("\"\\\r\v\f") == std::string::npos, "unquoted field");
        return field;
    }
    rest.remove_prefix(1);
    while (true) {
        const auto quote = rest.find('"');
        fuzz::expect(quote != std::string_view::npos, "a quoted field does not end");
        field += rest.substr(0, quote);
        rest.remove_prefix(quote + 1);
        if (!rest.starts_with('"')) return field;
        field += '"';
        rest.remove_prefix(1);
    }
}

Lines readBack(std::string_view rest, char delimiter) {
    Lines lines;
    while (!rest.empty()) {
        lines.emplace_back();
        while (true) {
            lines.back().push_back(readField(rest, delimiter));
            fuzz::expect(!rest.empty(), "the last line ends");
            const bool more = rest.front() == delimiter;
            fuzz::expect(more || rest.front() == '\n', "a field ends at a delimiter or line end");
            rest.remove_prefix(1);
            if (!more) break;
        }
    }
    return lines;
}

}  // namespace

SALVOR_FUZZ_TARGET(csv_writer) {
    const char delimiter = input.empty() ? ',' : ",;\t|"[input[0] % 4U];
    const Lines lines = linesOf(fuzz::asText(input));
    const fuzz::InputFile file({});
    CsvWriter csv(file.path());
    fuzz::expect(!csv.setDelimiter(std::string(1, delimiter)), "the delimiter is refused");
    for (const auto& line : lines) {
        for (const auto& field : line) csv.writeField(field);
        csv.finishLine();
    }
    fuzz::expect(csv.close().empty(), csv.close());
    const auto written = MappedFile::open(file.path());
    fuzz::expect(written.has_value(), "the file is there");
    fuzz::expect(readBack(fuzz::asText(written->bytes()), delimiter) == lines,
                 "what was written reads back");
}
