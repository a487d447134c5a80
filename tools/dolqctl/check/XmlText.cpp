#include "check/XmlText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>

#include <libxml/parser.h>

#include "common/RegularFile.h"

namespace dolqctl {

namespace {

struct Kind {
    int code;         ///< an xmlParserErrors
    bool goesOn;      ///< TinyXML does, and the parser finds the next error, too
    const char* text; ///< null for the parser's own
};

constexpr Kind kKinds[] = {
    {XML_ERR_INVALID_CHAR, true, nullptr},
    {XML_ERR_ENTITYREF_SEMICOL_MISSING, true, "the '&' is left out: write \"&amp;\" for it"},
    {XML_ERR_UNDECLARED_ENTITY, true,
     "the '&' of an unknown entity is left out: write the character that is meant"},
    {XML_ERR_NAME_REQUIRED, false,
     "no name, or a '>' is missing before it: write \"&amp;\" for '&', \"&lt;\" for '<'"},
    {XML_ERR_DOCUMENT_END, false, "nothing behind the root element is read"},
    {XML_ERR_LT_IN_ATTRIBUTE, false, "a '<' in a value: is a quotation mark missing before it?"},
    {XML_ERR_SPACE_REQUIRED, false, "a quotation mark, blank or '>' is missing"},
    {XML_ERR_ATTRIBUTE_WITHOUT_VALUE, false, "the attribute has no value"},
    {XML_ERR_HYPHEN_IN_COMMENT, true,
     "\"--\" in a comment: is the end of the comment before it missing?"},
    {XML_ERR_RESERVED_XML_NAME, true, nullptr},
    {XML_ERR_OK, false, nullptr}}; // all others

/// Up to where TinyXML may stop. Makes no document: it hears of errors alone.
class Parser {
public:
    Parser(const char* text, std::vector<XmlText::Problem>& problems)
        : m_problems(problems),
          m_parser(xmlCreateDocParserCtxt(reinterpret_cast<const xmlChar*>(text)),
                   &xmlFreeParserCtxt) {
        if (m_parser == nullptr) {
            throw std::bad_alloc();
        }
        m_parser->userData = this;
        *m_parser->sax = {};
        m_parser->sax->initialized = XML_SAX2_MAGIC;
        m_parser->sax->serror = [](void* self, xmlErrorPtr error) {
            static_cast<Parser*>(self)->add(*error);
        };
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {}); // or it prints others
        xmlCtxtUseOptions(m_parser.get(), XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_HUGE);
        xmlParseDocument(m_parser.get());
        xmlFreeDoc(m_parser->myDoc); // of entities, where the parser was stopped
        m_parser->myDoc = nullptr;
    }

private:
    void add(const xmlError& error) {
        if (m_stops || error.domain != XML_FROM_PARSER || error.level < XML_ERR_ERROR) {
            return; // a consequence, or what TinyXML does not look at
        }
        const Kind& kind =
            *std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& each) {
                return each.code == error.code || each.code == XML_ERR_OK;
            });
        const std::string own = error.message; // ends a line
        m_problems.push_back(
            {error.line, error.int2, kind.text ? kind.text : own.substr(0, own.find('\n'))});
        m_stops = !kind.goesOn;
        if (m_stops) {
            xmlStopParser(m_parser.get());
        }
    }

    std::vector<XmlText::Problem>& m_problems;
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> m_parser;
    bool m_stops = false;
};

} // namespace

XmlText readXml(const std::string& path) {
    XmlText xml;
    std::string content;
    const int error = common::readRegularFile(path, content.max_size(), content);
    if (error != 0 || content.empty()) {
        xml.readError = error == EISDIR || error == EINVAL ? "not a regular file"
                        : error != 0                       ? std::strerror(error)
                                                           : "it is empty";
        return xml;
    }
    xml.size = content.size();
    constexpr char kByteOrderMarks[] = "\xEF\xBB\xBF\xEF\xBB\xBF";
    while (content.rfind(kByteOrderMarks, 0) == 0) { // TinyXML takes any number of them
        content.erase(0, 3);
    }
    const std::size_t nul = content.find('\0');
    xml.hasNul = nul != content.npos;
    if (nul != 0) {
        const Parser parser(content.c_str(), xml.problems);
    }
    if (xml.hasNul) {
        const auto line = 1 + std::count(content.begin(), content.begin() + nul, '\n');
        xml.problems = {{static_cast<int>(line), 0,
                         "a NUL byte ends the text here: if it is UTF-16, save it as UTF-8"}};
    }
    return xml;
}

} // namespace dolqctl
