// The seam between the signatures parser and the XML library: callbacks, errors, line numbers.
#include <fmt/format.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <memory>

#include "carving/signatures/SqLiteTableSignaturesParser.h"

namespace salvor {
namespace {

constexpr std::size_t kLargestFile = std::size_t{16} << 20;

// What the callbacks are given.
struct Run {
    SqLiteTableSignaturesParser& parser;
    xmlParserCtxtPtr context;

    void markLine() const { parser.setLine(static_cast<long>(xmlSAX2GetLineNumber(context))); }
};

const char* chars(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

void onStart(void* user, const xmlChar* name, const xmlChar** attributes) {
    const auto& run = *static_cast<Run*>(user);
    SqLiteTableSignaturesParser::Attributes values;
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
        values.emplace(chars(attributes[0]), attributes[1] ? chars(attributes[1]) : "");
    }
    run.markLine();
    run.parser.didStartElement(chars(name), values);
}

void onEnd(void* user, const xmlChar* name) {
    const auto& run = *static_cast<Run*>(user);
    run.markLine();
    run.parser.didEndElement(chars(name));
}

void onCharacters(void* user, const xmlChar* text, int length) {
    const auto& run = *static_cast<Run*>(user);
    run.markLine();
    run.parser.foundCharacters({chars(text), static_cast<std::size_t>(length)});
}

void onDocumentType(void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
    const auto& run = *static_cast<Run*>(user);
    run.markLine();
    run.parser.foundDocumentType();
}

// Errors are taken from the context afterwards; nothing is printed.
void onMessage(void*, const char*, ...) {}

xmlSAXHandler handler() {
    xmlSAXHandler sax{};
    // Not the SAX2 mark: elements come with their names as written.
    sax.initialized = 1;
    sax.startElement = onStart;
    sax.endElement = onEnd;
    sax.characters = onCharacters;
    sax.ignorableWhitespace = onCharacters;
    sax.internalSubset = onDocumentType;
    sax.warning = onMessage;
    sax.error = onMessage;
    sax.fatalError = onMessage;
    return sax;
}

struct FreeContext {
    void operator()(xmlParserCtxt* context) const {
        xmlFreeDoc(context->myDoc);
        context->myDoc = nullptr;
        xmlFreeParserCtxt(context);
    }
};

std::string describe(xmlParserCtxt& context) {
    const auto* error = xmlCtxtGetLastError(&context);
    if (error == nullptr || error->message == nullptr) return "malformed XML";
    std::string text = error->message;
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return fmt::format("line {}: {}", error->line, text);
}

}  // namespace

bool SqLiteTableSignaturesParser::parseTableSignatures() {
    if (data_.empty() || data_.size() > kLargestFile) {
        fault_ = data_.empty() ? "the file is empty" : "the file is too large";
        return false;
    }
    xmlInitParser();
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlCreateMemoryParserCtxt(
        reinterpret_cast<const char*>(data_.data()), static_cast<int>(data_.size())));
    if (!context) {
        fault_ = "the XML parser could not be set up";
        return false;
    }
    // With NOENT "&amp;" reads as "&" in attributes. Entities that the file declares stay unknown:
    // the handler neither keeps nor looks up any.
    xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
    *context->sax = handler();
    Run run{*this, context.get()};
    context->userData = &run;
    if (xmlParseDocument(context.get()) == 0 && context->wellFormed == 1) return true;
    fault_ = describe(*context);
    return false;
}

}  // namespace salvor
