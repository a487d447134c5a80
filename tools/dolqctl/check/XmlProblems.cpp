#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>

#include <libxml/parser.h>

#include "check/MappingFileChecker.h"

namespace dolqctl {

namespace {

/// What TinyXML reads on after, so that the next problem counts, too.
constexpr int kHarmless[] = {XML_ERR_INVALID_CHAR, XML_ERR_ENTITYREF_SEMICOL_MISSING,
                             XML_ERR_UNDECLARED_ENTITY, XML_ERR_HYPHEN_IN_COMMENT,
                             XML_ERR_RESERVED_XML_NAME};

void addProblem(void* user, xmlErrorPtr error) {
    auto& problems = *static_cast<std::vector<XmlProblem>*>(user);
    const bool isConsequence = !problems.empty() && !problems.back().isHarmless;
    if (!isConsequence && error->domain == XML_FROM_PARSER && error->level >= XML_ERR_ERROR) {
        const std::string text = error->message; // ends a line
        const bool isHarmless =
            std::count(std::begin(kHarmless), std::end(kHarmless), error->code) > 0;
        problems.push_back({error->line, error->int2, text.substr(0, text.find('\n')), isHarmless});
    }
}

} // namespace

std::vector<XmlProblem> findXmlProblems(std::string text) {
    constexpr char kTwoByteOrderMarks[] = "\xEF\xBB\xBF\xEF\xBB\xBF";
    while (text.rfind(kTwoByteOrderMarks, 0) == 0) { // TinyXML takes any number of them
        text.erase(0, 3);
    }
    if (const std::size_t nul = text.find('\0'); nul != text.npos) {
        const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(nul), '\n');
        return {{static_cast<int>(line), 0,
                 "a NUL byte ends the text here: if it is UTF-16, save it as UTF-8", false}};
    }
    const xmlParserCtxtPtr parser =
        xmlCreateDocParserCtxt(reinterpret_cast<const xmlChar*>(text.c_str()));
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    std::vector<XmlProblem> problems;
    parser->userData = &problems;
    *parser->sax = {}; // makes no document, which attributes and entities could blow up
    parser->sax->initialized = XML_SAX2_MAGIC;
    parser->sax->serror = addProblem;
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {}); // or it prints others
    xmlCtxtUseOptions(parser, XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_HUGE);
    xmlParseDocument(parser);
    xmlFreeDoc(parser->myDoc); // of entities, left where the parser gave up
    xmlFreeParserCtxt(parser);
    return problems;
}

} // namespace dolqctl
