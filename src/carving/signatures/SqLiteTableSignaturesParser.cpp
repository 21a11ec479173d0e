#include "carving/signatures/SqLiteTableSignaturesParser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>

#include "util/Utf8.h"

namespace salvor {
namespace {

// No header of a real table comes near this; it bounds what a hostile file can make us hold.
constexpr std::size_t kLongestText = std::size_t{1} << 20;
constexpr std::size_t kMostOddities = 1000;
constexpr std::size_t kLongestVersion = 1000;

// A whole number with an optional sign, or nothing.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string_view firstCharacter(std::string_view text) {
    std::string_view rest = text;
    takeCodePoint(rest);
    return text.substr(0, text.size() - rest.size());
}

}  // namespace

struct SqLiteTableSignaturesParser::Element {
    std::string_view name;
    void (SqLiteTableSignaturesParser::*start)(const Attributes&);
    void (SqLiteTableSignaturesParser::*end)();
};

const SqLiteTableSignaturesParser::Element* SqLiteTableSignaturesParser::elementNamed(
    std::string_view name) {
    using P = SqLiteTableSignaturesParser;
    static constexpr std::array<Element, 7> kElements{{
        {"signatures", &P::startSignatures, nullptr},
        {"signature", &P::startSignature, &P::endSignature},
        {"pattern", &P::startPattern, &P::endPattern},
        {"version", &P::startVersion, &P::endVersion},
        {"columns", nullptr, &P::endColumns},
        {"header", &P::startHeader, &P::endHeader},
        {"attributemapping", &P::startMapping, &P::endMapping},
    }};
    const auto found = std::find_if(kElements.begin(), kElements.end(),
                                    [name](const Element& one) { return one.name == name; });
    return found == kElements.end() ? nullptr : &*found;
}

std::unique_ptr<SqLiteTableSignaturesParser> SqLiteTableSignaturesParser::initWithURL(
    const std::filesystem::path& file) {
    auto mapped = MappedFile::open(file);
    auto parser = std::make_unique<SqLiteTableSignaturesParser>(mapped ? mapped->bytes() : Bytes{});
    parser->file_ = std::move(mapped);
    return parser;
}

void SqLiteTableSignaturesParser::setSqLiteTableSignatures(SqLiteTableSignatures* signatures) {
    signatures_ = signatures;
}

void SqLiteTableSignaturesParser::didStartElement(std::string_view name,
                                                  const Attributes& attributes) {
    text_.clear();
    const Element* element = elementNamed(name);
    if (element == nullptr) {
        oddity(fmt::format("unknown element \"{}\" is ignored", name));
    } else if (element->start != nullptr) {
        (this->*element->start)(attributes);
    }
}

void SqLiteTableSignaturesParser::didEndElement(std::string_view name) {
    const Element* element = elementNamed(name);
    if (element != nullptr && element->end != nullptr) (this->*element->end)();
}

void SqLiteTableSignaturesParser::foundCharacters(std::string_view text) {
    const std::size_t room = kLongestText - text_.size();
    if (text.size() > room) oddity(fmt::format("text is cut off after {} bytes", kLongestText));
    text_.append(text.substr(0, room));
}

void SqLiteTableSignaturesParser::foundDocumentType() {
    oddity("document type declaration is ignored");
}

void SqLiteTableSignaturesParser::startSignatures(const Attributes&) {
    if (started_) {
        oddity("a second \"signatures\" element has no effect");
        return;
    }
    started_ = true;
    if (signatures_ == nullptr) {
        ownSignatures_ = std::make_unique<SqLiteTableSignatures>();
        signatures_ = ownSignatures_.get();
    }
    signatures_->tableSignatures.clear();
}

void SqLiteTableSignaturesParser::startSignature(const Attributes& attributes) {
    if (!started_) oddity("\"signature\" stands outside \"signatures\"");
    signature_ = std::make_shared<SQLiteSignature>();
    signature_->Name = attribute(attributes, "signature", "name");
    signature_->Database = attribute(attributes, "signature", "database");
    signature_->Table = attribute(attributes, "signature", "table");
    signature_->line = line_;
}

void SqLiteTableSignaturesParser::startPattern(const Attributes&) {
    if (!signature_) oddity("\"pattern\" stands outside \"signature\"");
    pattern_ = std::make_shared<TablePattern>();
    patternLine_ = line_;
}

void SqLiteTableSignaturesParser::startVersion(const Attributes& attributes) {
    version_ = attribute(attributes, "version", "value");
}

void SqLiteTableSignaturesParser::startHeader(const Attributes&) {
    version_.clear();
}

void SqLiteTableSignaturesParser::startMapping(const Attributes& attributes) {
    mapping_.emplace();
    const auto name = attributes.find("name");
    if (name != attributes.end()) mapping_->Name = name->second;
    if (mapping_->Name.empty()) oddity("\"attributemapping\" without a name maps nothing");
    const std::string column = attribute(attributes, "attributemapping", "column");
    const auto number = wholeNumber(column);
    if (!number) oddity(fmt::format("column \"{}\" is not a whole number and counts as 0", column));
    mapping_->Column = number.value_or(0);
    mapping_->line = line_;
}

void SqLiteTableSignaturesParser::endSignature() {
    if (!signature_ || signatures_ == nullptr) return;
    if (!known_.insert({signature_->Name, signature_->Database, signature_->Table}).second) {
        oddity(fmt::format("\"{}\" is there already; only the first is ever found",
                           signature_->Table));
    }
    signatures_->tableSignatures.push_back(signature_);
}

void SqLiteTableSignaturesParser::endPattern() {
    if (!pattern_) return;
    checkPattern();
    if (signature_) signature_->TablePatterns.push_back(pattern_);
}

void SqLiteTableSignaturesParser::endVersion() {
    if (pattern_) separateIosVersions();
}

void SqLiteTableSignaturesParser::endColumns() {
    if (pattern_) pattern_->columns = processCurrentString();
    text_.clear();
}

void SqLiteTableSignaturesParser::endHeader() {
    if (pattern_) {
        pattern_->headerPattern = processCurrentString();
        pattern_->hasHeader = true;
        checkHeader(pattern_->headerPattern);
    }
    text_.clear();
}

void SqLiteTableSignaturesParser::endMapping() {
    // Kept: mapping-needs-a-name.
    if (pattern_ && mapping_ && !mapping_->Name.empty())
        pattern_->AttributesMapping.push_back(*mapping_);
}

std::string SqLiteTableSignaturesParser::processCurrentString() {
    // Only the space character is trimmed; tabs and line ends stay.
    const auto first = text_.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text_.substr(first, text_.find_last_not_of(' ') - first + 1);
}

// "iOS456" stands for iOS4, iOS5 and iOS6, and is kept whole as well.
void SqLiteTableSignaturesParser::separateIosVersions() {
    constexpr std::string_view kPrefix = "iOS";
    if (version_.size() > kLongestVersion) {
        oddity(fmt::format("version of {} bytes is not split", version_.size()));
    } else if (version_.starts_with(kPrefix) && utf16Length(version_) > kPrefix.size() + 1) {
        std::string_view rest = version_;
        rest.remove_prefix(kPrefix.size());
        while (!rest.empty()) {
            const std::string_view character = firstCharacter(rest);
            pattern_->SupportedVersions.push_back(fmt::format("{}{}", kPrefix, character));
            rest.remove_prefix(character.size());
        }
    }
    pattern_->SupportedVersions.push_back(version_);
}

std::string SqLiteTableSignaturesParser::attribute(const Attributes& attributes,
                                                   const char* element, const char* name) {
    const auto found = attributes.find(name);
    if (found != attributes.end()) return found->second;
    oddity(fmt::format("\"{}\" has no attribute \"{}\"", element, name));
    return {};
}

void SqLiteTableSignaturesParser::checkHeader(const std::string& text) {
    if (text.empty()) oddity("empty header: one column with the code 0");
    const auto stray = text.find_first_not_of("0123456789[];,+- \t\r\n");
    if (stray != std::string::npos) {
        oddity(fmt::format("header holds characters that are no part of a code: \"{}\"",
                           firstCharacter(std::string_view(text).substr(stray))));
    }
}

void SqLiteTableSignaturesParser::checkPattern() {
    const auto report = [this](std::string text) {
        std::swap(line_, patternLine_);
        oddity(std::move(text));
        std::swap(line_, patternLine_);
    };
    if (pattern_->SupportedVersions.empty()) report("pattern names no version");
    if (!pattern_->hasHeader) {
        report("pattern has no header and is skipped");
        return;
    }
    const HeaderPattern header = pattern_->Header();
    if (header.front().front() >= 1 && header.size() < 3) {
        report("row-id pattern has fewer than three columns");
    }
    for (const AttributesMapping& mapping : pattern_->AttributesMapping) {
        if (mapping.Column < 0 || mapping.Column >= static_cast<std::int64_t>(header.size())) {
            report(fmt::format("\"{}\" is mapped to column {}, but the header has {}", mapping.Name,
                               mapping.Column, header.size()));
        }
    }
}

void SqLiteTableSignaturesParser::oddity(std::string text) {
    if (oddities_.size() < kMostOddities) oddities_.push_back({line_, std::move(text)});
}

}  // namespace salvor
