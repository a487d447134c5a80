#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include <libxml/parser.h>

#include "check/MappingFileChecker.h"

namespace dolqctl {

namespace {

constexpr struct Kind {
    int code;         ///< an xmlParserErrors; 0 for all others
    bool isHarmless;  ///< TinyXML goes on, and the parser may find the next problem, too
    const char* text; ///< null for the parser's own
} kKinds[] = {
    {XML_ERR_INVALID_CHAR, true, nullptr},
    {XML_ERR_ENTITYREF_SEMICOL_MISSING, true, "the '&' is left out: write \"&amp;\" for it"},
    {XML_ERR_UNDECLARED_ENTITY, true, "the '&' of an unknown entity is left out"},
    {XML_ERR_HYPHEN_IN_COMMENT, true, "\"--\" in a comment: does the comment before it end?"},
    {XML_ERR_RESERVED_XML_NAME, true, nullptr},
    {XML_ERR_NAME_REQUIRED, false, "no name, or a '>' is missing before it: '<' is \"&lt;\""},
    {XML_ERR_DOCUMENT_END, false, "nothing behind the root element is read"},
    {XML_ERR_LT_IN_ATTRIBUTE, false, "a '<' in a value: is a quotation mark missing before it?"},
    {XML_ERR_SPACE_REQUIRED, false, "a quotation mark, blank or '>' is missing"},
    {XML_ERR_ATTRIBUTE_WITHOUT_VALUE, false, "the attribute has no value"},
    {XML_ERR_OK, false, nullptr}};

struct State {
    xmlParserCtxt& parser;
    std::vector<XmlProblem> problems;
    bool isStopped = false;
};

void addProblem(void* user, xmlErrorPtr error) {
    auto& state = *static_cast<State*>(user);
    if (state.isStopped || error->domain != XML_FROM_PARSER || error->level < XML_ERR_ERROR) {
        return; // a consequence, or what TinyXML does not look at
    }
    const Kind& kind = *std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& each) {
        return each.code == error->code || each.code == XML_ERR_OK;
    });
    const std::string own = error->message; // ends a line
    state.problems.push_back(
        {error->line, error->int2, kind.text ? kind.text : own.substr(0, own.find('\n'))});
    if (!kind.isHarmless) {
        state.isStopped = true;
        xmlStopParser(&state.parser);
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
                 "a NUL byte ends the text here: if it is UTF-16, save it as UTF-8"}};
    }
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> parser(
        xmlCreateDocParserCtxt(reinterpret_cast<const xmlChar*>(text.c_str())), &xmlFreeParserCtxt);
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    State state{*parser, {}};
    parser->userData = &state;
    *parser->sax = {}; // makes no document: only errors are heard of
    parser->sax->initialized = XML_SAX2_MAGIC;
    parser->sax->serror = addProblem;
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {}); // or it prints others
    xmlCtxtUseOptions(parser.get(), XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_HUGE);
    xmlParseDocument(parser.get());
    xmlFreeDoc(parser->myDoc); // of entities, left where the parser was stopped
    parser->myDoc = nullptr;
    return state.problems;
}

} // namespace dolqctl
