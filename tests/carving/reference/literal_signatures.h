#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace salvor::reference {

struct LiteralMapping {
    std::string name;
    std::int64_t column = 0;
};

struct LiteralPattern {
    std::vector<std::string> versions;
    std::optional<std::string> header;  ///< absent without a header element
    std::vector<LiteralMapping> mappings;

    /// Per column the allowed codes.
    std::vector<std::vector<std::int32_t>> codes() const;
    bool supports(const std::string& version) const;
};

struct LiteralSignature {
    std::string domain;
    std::string database;
    std::string table;
    std::vector<LiteralPattern> patterns;
};

/// Reads the text of a signatures file with a reader of its own: elements, attributes, character
/// data, comments and the predefined entities; well-formed input only.
std::vector<LiteralSignature> parseSignatures(const std::string& xml);

/// The patterns of the first signature equal in all three, narrowed to `version` when given.
std::vector<LiteralPattern> selectPatterns(const std::vector<LiteralSignature>& signatures,
                                           const std::string& domain, const std::string& database,
                                           const std::string& table,
                                           const std::optional<std::string>& version);

}  // namespace salvor::reference
