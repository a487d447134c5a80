#include "common/XmlDocument.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

/// The fuzz target, which gets its seeds here: ends the process where the guarded document and
/// TinyXML differ.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace common {

namespace {

std::string repeat(const std::string& text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

const std::string kDeep = repeat("<a>", XmlLimits().depth + 1);
const std::string kUtf8 = "<?xml version='1.0'?>";
const std::string kLatin1 = "<?xml version='1.0' encoding='ISO-8859-1'?>";

/// 300 elements side by side in a root: the text between `<b>` and its end decides whether a
/// closing tag that only seems to be one makes them look flat.
std::string falselyClosed(const std::string& disguise) {
    return "<r>" + repeat("<b>" + disguise, 300);
}

struct TextCase {
    const char* name;
    std::string text;
    bool safe;
};

const TextCase kTextCases[] = {
    {"Empty", "", true},
    {"NoMarkup", "just text", true},
    {"DeepestAllowed", repeat("<a>", XmlLimits().depth) + repeat("</a>", XmlLimits().depth), true},
    {"OneTooDeep", kDeep, false},
    {"OneTooDeepAndEmpty", repeat("<a>", XmlLimits().depth) + "<a/>", false},
    {"FlatAndLong", "<r>" + repeat("<m a='1'/>", 1000) + "</r>", true},
    {"FlatPairs", "<r>" + repeat("<_m>x</_m >", 1000) + "</r>", true},
    {"MostAttributes", "<a" + repeat(" x=''", XmlLimits().attributes) + "/>", true},
    {"OneAttributeTooMany", "<a" + repeat(" x=''", XmlLimits().attributes + 1) + "/>", false},
    // Closing tags that the parser does not see.
    {"ClosedInComment", falselyClosed("<!-- </b> -->"), false},
    {"ClosedInCdata", falselyClosed("<![CDATA[</b>]]>"), false},
    {"ClosedInUnknown", falselyClosed("<!x </b >"), false},
    {"ClosedInQuotes", falselyClosed("<c x='/></b>'>"), false},
    {"ClosedInDoubleQuotes", falselyClosed("<c x=\"/></b>\">"), false},
    {"ClosedInNumericReference", falselyClosed("&#x</b>x41;"), false},
    {"ClosedBehindSwallowedBracket", kUtf8 + falselyClosed("\xC3</b>"), false},
    {"ClosedBehindBomSwallowedBracket", "\xEF\xBB\xBF" + falselyClosed("\xF0 <</b>"), false},
    {"ClosedBehindSwallowedLineEnd", kUtf8 + falselyClosed("\xE2\r\n</b>"), false},
    {"ClosedBehindLatin1Letter", kLatin1 + falselyClosed("\xC3</b>"), true},
    {"FirstDeclarationCounts", kLatin1 + kUtf8 + falselyClosed("\xC3</b>"), true},
    {"NestedDeclarationCountsNothing", "<q>" + kUtf8 + falselyClosed("\xC3</b>"), true},
    {"EncodingInReferences", "<?xml encoding='&#x55;&TF8'?>" + falselyClosed("\xC3</b>"), false},
    {"EncodingIsNoUtf8", "<?xml encoding='R&D'?>" + falselyClosed("\xC3</b>"), true},
    // Openings that the parser sees in places where they are easily missed.
    {"OpenedBehindSwallowedQuote", "<a v='&#x'x1;'>" + kDeep + "'", false},
    {"OpenedBehindSwallowedDoubleQuote", "<a v=\"&#x\"x1;\">" + kDeep + "\"", false},
    {"OpenedBehindShortComment", "<!-->-->" + kDeep, false},
    {"OpenedBehindDoctype", "<!DOCTYPE a>" + kDeep, false},
    {"OpenedBehindRootsEnd", "<a></a></a>" + kDeep, false},
    {"OpenedBehindSlash", "<a b=c/d=>" + kDeep, true},
    {"OpenedInComment", "<a><!--" + kDeep + "--></a>", true},
    {"OpenedBehindNul", std::string("<a/>\0", 5) + kDeep, true},
    {"OpenedBehindSteppedOverNul", kUtf8 + std::string("<a b='\xC3\0'>", 10) + kDeep, false},
    {"OpenedBehindText", "<a/>text" + kDeep, true},
};

TEST(XmlDocument, KeepsTheLimits) {
    for (const TextCase& row : kTextCases) {
        XmlDocument document;
        const bool loaded = document.load(row.text);
        // What is refused without an error goes beyond the limits.
        EXPECT_EQ(loaded || document.Error(), row.safe) << row.name;
    }
}

/// Nothing of what is within the limits may depend on the look that is taken at a text before
/// TinyXML gets it, and nobody may read behind the text.
TEST(XmlDocument, MakesOfOddTextsWhatTinyXmlAloneDoes) {
    int texts = 0;
    for (const auto& seed : std::filesystem::directory_iterator(XML_DOCUMENT_CORPUS)) {
        std::ifstream file(seed.path(), std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        ++texts;
    }
    EXPECT_GT(texts, 20);
}

/// Some releases of TinyXML never come to the end of half a byte order mark when they count
/// columns.
TEST(XmlDocument, NothingIsCountedWhereACharacterIsCutOff) {
    for (const char* const text : {"\xEF\xBB\xBF<\xEF\r\n", "<a b='\xF0\xA0\xA0"}) {
        XmlDocument cutOff;
        EXPECT_FALSE(cutOff.load(text));
        EXPECT_EQ(cutOff.TabSize(), 0);
    }
    XmlDocument whole;
    EXPECT_TRUE(whole.load("\r\n<\xEF\xBF\xB0/>"));
    EXPECT_EQ(whole.FirstChildElement()->Row(), 2);
}

} // namespace
} // namespace common
