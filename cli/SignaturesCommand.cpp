#include <fmt/format.h>

#include "carving/signatures/SignatureListing.h"
#include "cli/Command.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/TextTable.h"
#include "recovery/signatures/SignatureReaders.h"

namespace salvor::cli {
namespace {

void writeSignatures(const SignatureListing& listing, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Left, Left, Right, Left});
    for (const auto& one : listing.signatures)
        table.add({one.domain, one.database, one.table,
                   fmt::format("{} {}", one.patterns, one.patterns == 1 ? "pattern" : "patterns"),
                   fmt::format("{}", fmt::join(one.versions, ", "))});
    table.write(out);
}

void writeOddities(const std::vector<SignatureOddity>& oddities, std::ostream& out) {
    for (const auto& oddity : oddities)
        out << fmt::format("line {}: {}\n", oddity.line, printable(oddity.text));
}

class SignaturesCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "signatures",
            "Checks a signatures file and lists what it holds.",
            {{"FILE", "the signatures file"}},
            {},
            "Prints a line per signature (domain, database, table, patterns, versions), then each "
            "oddity with its line number."};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto& file = given["FILE"];
        requireReadableFile(file);
        const auto listing = SignatureListing::read(file);
        writeSignatures(listing, console.out);
        writeOddities(listing.oddities, console.out);
        writeOddities(unreadSignatures(listing), console.out);
        if (!listing.fault.empty())
            throw Failure(ExitStatus::SourceUnusable, fmt::format("{}: {}", file, listing.fault));
        return ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeSignaturesCommand() {
    return std::make_unique<SignaturesCommand>();
}

}  // namespace salvor::cli
