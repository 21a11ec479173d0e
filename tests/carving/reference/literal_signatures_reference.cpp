#include <cctype>
#include <limits>
#include <map>
#include <stdexcept>

#include "literal_signatures.h"

namespace salvor::reference {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The leading-digits rule: "  -12abc" is -12, "abc" is 0; too large a number stays at the limit.
std::int32_t leadingNumber(const std::string& text) {
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || text[at] == '\n' || text[at] == '\r')) ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        negative = text[at] == '-';
        ++at;
    }
    std::int64_t value = 0;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        value = value * 10 + (text[at] - '0');
        if (value > std::int64_t{1} << 32) value = std::int64_t{1} << 32;
    }
    if (negative) value = -value;
    if (value > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

/// A whole number and nothing else, otherwise 0.
std::int64_t wholeNumber(const std::string& text) {
    std::size_t at = 0;
    bool negative = false;
    if (!text.empty() && text[0] == '-') {
        negative = true;
        at = 1;
    }
    if (at == text.size() || text.size() > 18) return 0;
    std::int64_t value = 0;
    for (; at < text.size(); ++at) {
        if (!isDigit(text[at])) return 0;
        value = value * 10 + (text[at] - '0');
    }
    return negative ? -value : value;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

std::string trimSpaces(std::string text) {
    while (!text.empty() && text.front() == ' ') text.erase(text.begin());
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

using Attributes = std::map<std::string, std::string>;

/// Does what each element's start and end stand for.
class SignatureBuilder {
  public:
    std::vector<LiteralSignature> signatures;

    void start(const std::string& element, const Attributes& attributes) {
        text_.clear();
        const auto attribute = [&](const char* name) {
            const auto found = attributes.find(name);
            return found == attributes.end() ? std::string() : found->second;
        };
        if (element == "signature")
            signature_ = {attribute("name"), attribute("database"), attribute("table"), {}};
        if (element == "pattern") pattern_ = {};
        if (element == "version") version_ = attribute("value");
        if (element == "header") version_.clear();
        if (element == "attributemapping")
            mapping_ = {attribute("name"), wholeNumber(attribute("column"))};
    }

    void characters(const std::string& characters) { text_ += characters; }

    void end(const std::string& element) {
        if (element == "signature") signatures.push_back(signature_);
        if (element == "pattern") signature_.patterns.push_back(pattern_);
        if (element == "version") addVersions();
        if (element == "attributemapping") pattern_.mappings.push_back(mapping_);
        if (element == "header") pattern_.header = trimSpaces(text_);
        if (element == "header" || element == "columns") text_.clear();
    }

  private:
    void addVersions() {
        const std::string prefix = "iOS";
        if (version_.rfind(prefix, 0) == 0 && version_.size() > 4) {
            for (std::size_t i = prefix.size(); i < version_.size(); ++i)
                pattern_.versions.push_back(prefix + version_[i]);
        }
        pattern_.versions.push_back(version_);
    }

    std::string text_;
    std::string version_;
    LiteralSignature signature_;
    LiteralPattern pattern_;
    LiteralMapping mapping_;
};

std::string decodeEntities(std::string text) {
    const std::vector<std::pair<std::string, std::string>> entities = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
    for (const auto& [name, meaning] : entities) {
        for (std::size_t at = text.find(name); at != std::string::npos;
             at = text.find(name, at + meaning.size()))
            text.replace(at, name.size(), meaning);
    }
    return text;
}

bool isSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// `name a="1" b='2'` into the element's name and its attributes.
std::string readTag(const std::string& tag, Attributes& attributes) {
    std::size_t at = 0;
    std::string name;
    while (at < tag.size() && !isSpace(tag[at])) name += tag[at++];
    while (at < tag.size()) {
        const std::size_t equals = tag.find('=', at);
        if (equals == std::string::npos) break;
        std::string key;
        for (; at < equals; ++at)
            if (!isSpace(tag[at])) key += tag[at];
        const std::size_t open = tag.find_first_of("\"'", equals);
        const std::size_t close = tag.find(tag.at(open), open + 1);
        attributes[key] = decodeEntities(tag.substr(open + 1, close - open - 1));
        at = close + 1;
    }
    return name;
}

}  // namespace

std::vector<std::vector<std::int32_t>> LiteralPattern::codes() const {
    std::vector<std::vector<std::int32_t>> columns;
    for (const std::string& column : split(header.value(), ';')) {
        std::string bare;
        for (const char c : column)
            if (c != '[' && c != ']') bare += c;
        std::vector<std::int32_t> allowed;
        for (const std::string& piece : split(bare, ',')) allowed.push_back(leadingNumber(piece));
        columns.push_back(allowed);
    }
    return columns;
}

bool LiteralPattern::supports(const std::string& version) const {
    for (const std::string& supported : versions)
        if (supported == version) return true;
    return false;
}

std::vector<LiteralSignature> parseSignatures(const std::string& xml) {
    SignatureBuilder builder;
    std::size_t at = 0;
    while (at < xml.size()) {
        const std::size_t open = xml.find('<', at);
        if (open == std::string::npos) break;
        if (open > at) builder.characters(decodeEntities(xml.substr(at, open - at)));
        if (xml.compare(open, 4, "<!--") == 0) {
            at = xml.find("-->", open) + 3;
            continue;
        }
        const std::size_t close = xml.find('>', open);
        if (close == std::string::npos) throw std::invalid_argument("the XML text ends in a tag");
        std::string tag = xml.substr(open + 1, close - open - 1);
        at = close + 1;
        if (tag.front() == '?') continue;
        if (tag.front() == '/') {
            builder.end(tag.substr(1));
            continue;
        }
        const bool empty = tag.back() == '/';
        if (empty) tag.pop_back();
        Attributes attributes;
        const std::string name = readTag(tag, attributes);
        builder.start(name, attributes);
        if (empty) builder.end(name);
    }
    return builder.signatures;
}

std::vector<LiteralPattern> selectPatterns(const std::vector<LiteralSignature>& signatures,
                                           const std::string& domain, const std::string& database,
                                           const std::string& table,
                                           const std::optional<std::string>& version) {
    for (const LiteralSignature& signature : signatures) {
        if (signature.domain != domain || signature.database != database ||
            signature.table != table)
            continue;
        std::vector<LiteralPattern> selected;
        for (const LiteralPattern& pattern : signature.patterns)
            if (!version || pattern.supports(*version)) selected.push_back(pattern);
        return selected;
    }
    return {};
}

}  // namespace salvor::reference
