#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "carving/signatures/SqLiteTableSignaturesParser.h"

namespace salvor {

/// One signature as a person checks it.
struct SignatureSummary {
    std::string domain;
    std::string database;
    std::string table;
    std::size_t patterns = 0;
    std::vector<std::string> versions;        ///< each once, in file order
    std::vector<AttributesMapping> mappings;  ///< each name once, where it is first mapped
    long line = 0;
};

/// A signatures file as `salvor signatures` shows it: a line per signature and what is odd.
struct SignatureListing {
    bool readable = false;  ///< the file could be opened
    std::string fault;      ///< what ended the reading before the end of the file; else empty
    std::vector<SignatureSummary> signatures;
    std::vector<SignatureOddity> oddities;

    static SignatureListing read(const std::filesystem::path& file);
};

}  // namespace salvor
