#include "mappings/XmlChecks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include <tinyxml.h>

#include "Output.h"
#include "common/RegularFile.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolqctl {

namespace {

constexpr char kRule[] = "not-well-formed";

struct Kind {
    int code; ///< an xmlParserErrors
    Severity severity;
    bool goesOn;      ///< TinyXML does, and the parser finds the next error, too
    const char* text; ///< null for the parser's own
};

constexpr Kind kKinds[] = {
    {XML_ERR_INVALID_CHAR, Severity::Error, true, nullptr},
    {XML_ERR_ENTITYREF_SEMICOL_MISSING, Severity::Error, true,
     "the '&' is left out: write \"&amp;\" for it"},
    {XML_ERR_UNDECLARED_ENTITY, Severity::Error, true,
     "the '&' of an unknown entity is left out: write the character that is meant"},
    {XML_ERR_NAME_REQUIRED, Severity::Error, false,
     "no name, or a '>' is missing before it: write \"&amp;\" for '&', \"&lt;\" for '<'"},
    {XML_ERR_DOCUMENT_END, Severity::Error, false, "none of what stands behind the root is read"},
    {XML_ERR_LT_IN_ATTRIBUTE, Severity::Error, false,
     "a '<' in a value: is a quotation mark missing before it?"},
    {XML_ERR_SPACE_REQUIRED, Severity::Error, false, "a quotation mark, blank or '>' is missing"},
    {XML_ERR_ATTRIBUTE_WITHOUT_VALUE, Severity::Error, false, "the attribute has no value"},
    // These TinyXML takes as they are meant.
    {XML_ERR_HYPHEN_IN_COMMENT, Severity::Warning, true, nullptr},
    {XML_ERR_RESERVED_XML_NAME, Severity::Warning, true, nullptr},
    {XML_ERR_OK, Severity::Error, false, nullptr}}; // all others

} // namespace

XmlText::XmlText(const std::string& path, Findings& findings) : m_findings(findings) {
    std::string content;
    const int error = common::readRegularFile(path, content.max_size(), content);
    if (error == EISDIR || error == EINVAL) {
        m_readError = "not a regular file";
    } else if (error != 0) {
        m_readError = std::strerror(error);
    } else if (content.empty()) {
        m_readError = "it is empty";
    } else {
        parse(content.c_str());
        if (const std::size_t nul = content.find('\0'); nul != content.npos) {
            content.resize(nul);
            const auto line = 1 + std::count(content.begin(), content.end(), '\n');
            m_errors = {{{findings.file(), static_cast<int>(line)},
                         Severity::Error,
                         kRule,
                         "a NUL byte ends the text here: if it is UTF-16, save it as UTF-8"}};
        }
    }
}

/// Up to where TinyXML may stop, or to a NUL byte. Makes no document: it hears of names and errors.
void XmlText::parse(const char* text) {
    if (*text == '\0') {
        return;
    }
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> parser(
        xmlCreateDocParserCtxt(reinterpret_cast<const xmlChar*>(text)), &xmlFreeParserCtxt);
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    m_parser = parser.get();
    m_parser->userData = this;
    *m_parser->sax = {};
    m_parser->sax->initialized = XML_SAX2_MAGIC;
    m_parser->sax->startElementNs = [](void* self, const xmlChar* name, auto...) {
        auto& names = static_cast<XmlText*>(self)->m_names;
        if (names.size() < 2) {
            names.emplace_back(reinterpret_cast<const char*>(name));
        }
    };
    m_parser->sax->serror = [](void* self, xmlErrorPtr error) {
        static_cast<XmlText*>(self)->add(*error);
    };
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {}); // or it prints others
    xmlCtxtUseOptions(m_parser, XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_HUGE);
    xmlParseDocument(m_parser);
}

void XmlText::add(const xmlError& error) {
    if (m_stops || error.domain != XML_FROM_PARSER || error.level < XML_ERR_ERROR) {
        return; // a consequence, or what TinyXML does not look at
    }
    const Kind& kind = *std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& each) {
        return each.code == error.code || each.code == XML_ERR_OK;
    });
    const std::string own = error.message; // ends a line
    m_errors.push_back({{m_findings.file(), error.line, error.int2},
                        kind.severity,
                        kRule,
                        kind.text ? kind.text : own.substr(0, own.find('\n'))});
    m_stops = !kind.goesOn;
    if (m_stops) {
        xmlStopParser(m_parser);
    }
}

bool XmlText::isManifest() const {
    return !m_names.empty() && isMisspelt(m_names.front(), kManifestRoot) &&
           m_names.back() != dolq::xmlconf::kMapping;
}

bool XmlText::hasErrorIn(int line) const {
    return std::any_of(m_errors.begin(), m_errors.end(),
                       [&](const Finding& error) { return error.position.line == line; });
}

void XmlText::addErrors() {
    for (const Finding& error : std::exchange(m_errors, {})) {
        m_findings.add(error);
    }
}

void XmlText::addNotLoaded(const TiXmlDocument& document, const std::string& otherwise) {
    Finding reason{{m_findings.file()}, Severity::Error, "not-loaded", otherwise};
    if (!m_readError.empty()) {
        reason.message = m_readError;
    } else if (!m_errors.empty()) {
        reason.position = m_errors.back().position;
        reason.message = m_errors.back().message;
        m_errors.pop_back();
    } else if (document.Error()) {
        reason.position = {m_findings.file(), document.ErrorRow(), document.ErrorCol()};
        reason.message = document.ErrorDesc();
    }
    reason.message.insert(0, "the file is not read: ");
    m_findings.add(std::move(reason));
    addErrors();
}

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known,
                          Findings& findings) {
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        const std::string name = attribute->Name();
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        const auto meant = std::find_if(known.begin(), known.end(), [&](const char* candidate) {
            const bool isPart = name.size() > 4 && std::strstr(candidate, name.c_str()) != nullptr;
            return (isPart || isMisspelt(name, candidate)) &&
                   element.Attribute(candidate) == nullptr;
        });
        const bool isMistake = meant != known.end();
        findings.add(isMistake ? Severity::Error : Severity::Warning, "unknown-attribute",
                     *attribute,
                     "the attribute " + inShortQuotes(name) + " is ignored" +
                         (isMistake ? ": did you mean '" + std::string(*meant) + "'?" : ""));
    }
}

void addUnreadText(const TiXmlElement& element, Findings& findings) {
    for (const TiXmlNode* node = element.FirstChild(); node != nullptr;
         node = node->NextSibling()) {
        if (const TiXmlText* const text = node->ToText()) {
            const bool isElement = text->ValueStr().find('=') != std::string::npos;
            findings.add(isElement ? Severity::Error : Severity::Warning, "unread-text", *text,
                         std::string(text->CDATA() ? "a CDATA section" : "text") +
                             " is not read: " + inShortQuotes(text->ValueStr()) +
                             (isElement && !text->CDATA() ? "; is a '<' missing?" : ""));
        }
    }
}

} // namespace dolqctl
