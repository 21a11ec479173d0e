#include "carving/deep/SqlTokens.h"

#include <algorithm>
#include <utility>

namespace salvor::deep {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isWordChar(char c) {
    const char l = lower(c);
    return (l >= 'a' && l <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace

bool equalNames(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

bool SqlToken::is(std::string_view word) const {
    return kind == Word && equalNames(text, word);
}

SqlToken SqlTokens::take() {
    SqlToken token = std::move(token_);
    advance();
    return token;
}

bool SqlTokens::take(std::string_view word) {
    if (!token_.is(word)) return false;
    advance();
    return true;
}

bool SqlTokens::take(char sign) {
    if (!token_.is(sign)) return false;
    advance();
    return true;
}

void SqlTokens::skipGroup() {
    for (std::size_t depth = 1; depth != 0 && token_.kind != SqlToken::End; advance()) {
        if (token_.is('(')) ++depth;
        if (token_.is(')')) --depth;
    }
}

bool SqlTokens::skipBlank() {
    const auto rest = text_.substr(at_);
    if (rest.empty()) return false;
    if (kBlanks.find(rest[0]) != kBlanks.npos) {
        ++at_;
        return true;
    }
    const bool line = rest.starts_with("--");
    if (!line && !rest.starts_with("/*")) return false;
    const auto end = line ? rest.find('\n') : rest.find("*/", 2);
    at_ = end == rest.npos ? text_.size() : at_ + end + (line ? 1 : 2);
    return true;
}

void SqlTokens::takeQuoted(char closing) {
    token_.kind = SqlToken::Quoted;
    for (++at_; at_ < text_.size(); ++at_) {
        if (text_[at_] == closing) {
            // A doubled quote stands for one; brackets cannot be doubled.
            if (closing == ']' || at_ + 1 >= text_.size() || text_[at_ + 1] != closing) break;
            ++at_;
        }
        token_.text += text_[at_];
    }
    ++at_;
}

void SqlTokens::advance() {
    while (skipBlank()) {
    }
    token_ = {};
    if (at_ >= text_.size()) return;
    const char c = text_[at_];
    if (c == '"' || c == '`' || c == '\'' || c == '[') return takeQuoted(c == '[' ? ']' : c);
    if (isWordChar(c)) {
        const std::size_t from = at_;
        while (at_ < text_.size() && isWordChar(text_[at_])) ++at_;
        token_ = {SqlToken::Word, std::string(text_.substr(from, at_ - from))};
        return;
    }
    token_ = {SqlToken::Other, std::string(1, c)};
    ++at_;
}

}  // namespace salvor::deep
