#pragma once

#include <string>
#include <vector>

namespace dolqctl {

/// A file of XML as text: what a parser that keeps to the rules of XML finds in it. TinyXML, which
/// reads it for programs, does not; without an error it may take something else than is written.
struct XmlText {
    struct Problem {
        int line;
        int column;
        std::string text;
    };
    std::string readError;         ///< why there is no text
    std::vector<Problem> problems; ///< up to where TinyXML may stop
    bool hasNul = false;
    std::size_t size = 0; ///< in bytes
};

XmlText readXml(const std::string& path);

} // namespace dolqctl
