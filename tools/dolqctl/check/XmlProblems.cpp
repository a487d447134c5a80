#include <algorithm>
#include <cstring>
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

struct State {
    std::string file;
    std::vector<Finding> problems;
    bool isOver; ///< what follows are consequences
};

void addProblem(void* user, xmlErrorPtr error) {
    auto& [file, problems, isOver] = *static_cast<State*>(user);
    if (!isOver && error->domain == XML_FROM_PARSER && error->level >= XML_ERR_ERROR) {
        const std::string text = error->message; // ends a line
        problems.push_back({{file, error->line, error->int2},
                            Rule::NotWellFormed,
                            {text.substr(0, text.find('\n'))}});
        isOver = std::count(std::begin(kHarmless), std::end(kHarmless), error->code) == 0;
    }
}

} // namespace

std::vector<Finding> findXmlProblems(const std::string& file, const std::string& text) {
    if (text.find('\0') != text.npos) {
        return {{{file}, Rule::NotWellFormed, {"it holds a NUL byte; is it UTF-16, not UTF-8?"}}};
    }
    constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
    const char* begin = text.c_str();
    while (std::strncmp(begin, kByteOrderMark, 3) == 0) { // TinyXML takes any number of them
        begin += 3;
    }
    xmlParserCtxt* const parser = xmlNewParserCtxt();
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    State state{file, {}, false};
    parser->userData = &state;
    *parser->sax = {}; // makes no document, which attributes and entities could blow up
    parser->sax->initialized = XML_SAX2_MAGIC;
    parser->sax->serror = addProblem;
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {}); // or it prints others
    xmlFreeDoc(xmlCtxtReadMemory(parser, begin, static_cast<int>(std::strlen(begin)), nullptr,
                                 nullptr, XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_HUGE));
    xmlFreeParserCtxt(parser);
    return state.problems;
}

} // namespace dolqctl
