#pragma once

#include <string>
#include <vector>

#include <libxml/parser.h>

#include "mappings/Findings.h"

class TiXmlDocument;
class TiXmlElement;

namespace dolqctl {

constexpr char kManifestRoot[] = "loadModules";

/// A file of XML as text: what a parser that keeps to the rules of XML finds in it. TinyXML, which
/// reads it for programs, does not; without an error it may take something else than is written.
class XmlText {
public:
    /// Takes the text of `path`, of which messages speak as `findings.file()`.
    XmlText(const std::string& path, Findings& findings);

    /// Whether somebody meant it to be a manifest of load modules, by its root element.
    bool isManifest() const;

    /// Whether something is not well-formed in the line.
    bool hasErrorIn(int line) const;

    /// Adds what is not well-formed in a file that TinyXML reads.
    void addErrors();

    /// Adds why nothing of the file is read: what is seen here, or what `document`, which the
    /// reader made of it, says, or `otherwise`.
    void addNotLoaded(const TiXmlDocument& document, const std::string& otherwise);

    bool wasRead() const { return m_readError.empty(); }

private:
    void parse(const char* text);
    void add(const xmlError& error);

    Findings& m_findings;
    std::string m_readError;          ///< why there is no text
    std::vector<std::string> m_names; ///< of the first two elements
    std::vector<Finding> m_errors;
    bool m_stops = false;              ///< at the last one; TinyXML may, too
    xmlParserCtxt* m_parser = nullptr; ///< while it parses
};

/// Adds texts between the children of `element`, which nothing reads.
void addUnreadText(const TiXmlElement& element, Findings& findings);

/// Adds the attributes of `element` that are none of the `known` ones, which are all that is read.
void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known,
                          Findings& findings);

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// Adds the mistakes in the manifest `path` as the embedded load-module handler reads it: an error
/// is a manifest that it refuses, or a mapping file that the library does not find in it.
void checkManifest(const std::string& path, XmlText& text, Findings& findings);

/// The mistakes in `path`, which is read as a manifest whatever it is. One that does not exist is
/// an error here; to the handler it is an empty category.
std::vector<Finding> findManifestMistakes(const std::string& path);

} // namespace dolqctl
