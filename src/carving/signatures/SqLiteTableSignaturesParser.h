#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "util/Bytes.h"
#include "util/MappedFile.h"

namespace salvor {

/// Something in a signatures file that is allowed but most likely not meant.
struct SignatureOddity {
    long line = 0;  ///< from 1
    std::string text;
};

/// Reads the table signatures from their XML file, element by element. Unknown elements are
/// ignored; malformed XML ends the reading, what was completed before stays. Document type
/// declarations are ignored, no entity but the five of XML itself is known and nothing is fetched.
/// The data must outlive the parser.
class SqLiteTableSignaturesParser {
  public:
    static std::unique_ptr<SqLiteTableSignaturesParser> initWithURL(
        const std::filesystem::path& file);
    explicit SqLiteTableSignaturesParser(Bytes data) : data_(data) {}
    SqLiteTableSignaturesParser(const SqLiteTableSignaturesParser&) = delete;
    SqLiteTableSignaturesParser& operator=(const SqLiteTableSignaturesParser&) = delete;

    /// The object to be filled. Without one the `signatures` element creates it.
    void setSqLiteTableSignatures(SqLiteTableSignatures* signatures);
    SqLiteTableSignatures* sqLiteTableSignatures() const { return signatures_; }

    /// Whether the whole document was read.
    bool parseTableSignatures();
    /// What ended the reading, with its line; empty when nothing did.
    const std::string& fault() const { return fault_; }
    const std::vector<SignatureOddity>& oddities() const { return oddities_; }

    using Attributes = std::map<std::string, std::string, std::less<>>;
    // Called by the XML parser.
    void didStartElement(std::string_view name, const Attributes& attributes);
    void didEndElement(std::string_view name);
    void foundCharacters(std::string_view text);
    void foundDocumentType();
    void setLine(long line) { line_ = line; }

  private:
    struct Element;
    static const Element* elementNamed(std::string_view name);

    void startSignatures(const Attributes& attributes);
    void startSignature(const Attributes& attributes);
    void startPattern(const Attributes& attributes);
    void startVersion(const Attributes& attributes);
    void startHeader(const Attributes& attributes);
    void startMapping(const Attributes& attributes);
    void endSignature();
    void endPattern();
    void endVersion();
    void endColumns();
    void endHeader();
    void endMapping();

    std::string processCurrentString();
    void separateIosVersions();
    std::string attribute(const Attributes& attributes, const char* element, const char* name);
    void checkHeader(const std::string& text);
    void checkPattern();
    void oddity(std::string text);

    Bytes data_;
    std::optional<MappedFile> file_;
    SqLiteTableSignatures* signatures_ = nullptr;
    std::unique_ptr<SqLiteTableSignatures> ownSignatures_;
    bool started_ = false;
    std::shared_ptr<SQLiteSignature> signature_;
    std::shared_ptr<TablePattern> pattern_;
    std::optional<AttributesMapping> mapping_;
    std::string version_;
    std::string text_;
    std::string fault_;
    std::vector<SignatureOddity> oddities_;
    std::set<std::array<std::string, 3>> known_;  ///< domain, database and table of each
    long line_ = 0;
    long patternLine_ = 0;
};

}  // namespace salvor
