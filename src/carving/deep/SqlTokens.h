#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace salvor::deep {

/// A token of schema text. Words keep their case; quoted names and literals are unquoted.
struct SqlToken {
    enum Kind { End, Word, Quoted, Other };

    Kind kind = End;
    std::string text;

    /// Whether it is the unquoted word `word` (in capitals), without regard to case.
    bool is(std::string_view word) const;
    bool is(char sign) const { return kind == Other && text.size() == 1 && text[0] == sign; }
    bool isName() const { return kind == Word || kind == Quoted; }
};

/// Splits the text of a schema row into tokens; comments and blanks are passed over. A quote or
/// comment that is not closed reaches to the end.
class SqlTokens {
  public:
    explicit SqlTokens(std::string_view text) : text_(text) { advance(); }

    const SqlToken& peek() const { return token_; }
    SqlToken take();
    /// Takes the token when it is this word or sign.
    bool take(std::string_view word);
    bool take(char sign);
    /// Behind an opening parenthesis: passes over everything up to the one that closes it.
    void skipGroup();

  private:
    void advance();
    bool skipBlank();
    void takeQuoted(char closing);

    std::string_view text_;
    std::size_t at_ = 0;
    SqlToken token_;
};

/// Equal without regard to the case of ASCII letters, as SQLite compares names.
bool equalNames(std::string_view a, std::string_view b);

}  // namespace salvor::deep
