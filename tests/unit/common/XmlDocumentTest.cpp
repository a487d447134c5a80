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

TEST(XmlDocument, KeepsTheLimits) {
    const auto [depth, attributes] = XmlLimits();
    const struct {
        const char* name;
        std::string text;
        bool safe;
    } rows[] = {
        {"Empty", "", true},
        {"NoMarkup", "just text", true},
        {"DeepestAllowed", repeat("<a>", depth) + repeat("</a>", depth), true},
        {"OneTooDeep", repeat("<a>", depth + 1), false},
        {"OneTooDeepAndEmpty", repeat("<a>", depth) + "<a/>", false},
        {"FlatAndLong", "<r>" + repeat("<m a='1'/>", 1000) + "</r>", true},
        {"MostAttributes", "<a" + repeat(" x=''", attributes) + "/>", true},
        {"OneAttributeTooMany", "<a" + repeat(" x=''", attributes + 1) + "/>", false},
    };
    for (const auto& row : rows) {
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
    EXPECT_GT(texts, 40);
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
