// Bodies of notes: packed messages of the newer store, tags of the older one.
#include <array>
#include <zlib.h>

#include "fuzz/Target.h"
#include "live/NoteText.h"
#include "util/Utf8.h"

using namespace salvor;

namespace {

// The same bytes as a gzip stream without compression.
std::string packed(std::string data) {
    z_stream stream{};
    fuzz::expect(deflateInit2(&stream, 0, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY) == Z_OK, "zlib");
    std::string out(deflateBound(&stream, data.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    fuzz::expect(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib");
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

}  // namespace

SALVOR_FUZZ_TARGET(note_body) {
    const std::string_view text = fuzz::asText(input);
    const Text stored = noteTextOfStoredData(text);
    fuzz::expect(!stored || isValidUtf8(*stored), "the text of a note is UTF-8");

    const Text document = noteTextOfDocument(text);
    fuzz::expect(!document || text.find(*document) != std::string_view::npos,
                 "the text of a note stands in its document");
    fuzz::expect(noteTextOfStoredData(packed(std::string(text))) == document,
                 "packing changes nothing");

    fuzz::expect(plainTextOfHtml(text).size() <= text.size(), "tags only go");
}
