// The dictionary of words that a keyboard learned.
#include "backup/extraction/KeyboardDictionary.h"
#include "fuzz/Target.h"
#include "util/Utf8.h"

using namespace salvor;

SALVOR_FUZZ_TARGET(keyboard_words) {
    std::string_view rest = fuzz::asText(input);
    std::int32_t number = 0;
    for (const auto& word : keyboardWordsOf(input)) {
        fuzz::expect(word->SlNo == ++number, "words count from 1");
        const Text& text = word->UserKey;
        fuzz::expect(text && text->size() >= 2 && isValidUtf8(*text), "a word is text");
        const auto at = rest.find(*text);
        fuzz::expect(at != std::string_view::npos, "words stand in the file in their order");
        rest.remove_prefix(at + text->size());
    }
}
