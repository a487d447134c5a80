#include "common/XmlGuard.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/RegularFile.h"

namespace common {

namespace {

std::string repeat(const std::string& text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

const std::string kDeep = repeat("<a>", kMaxElementDepth + 1);
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

/// Keeps the rows' names in the test list the same from run to run.
// NOLINTNEXTLINE(readability-identifier-naming): GoogleTest's name for it.
void PrintTo(const TextCase& row, std::ostream* out) { *out << row.name; }

class XmlGuardText : public testing::TestWithParam<TextCase> {};

TEST_P(XmlGuardText, TellsWhetherTheParserStaysWithinBounds) {
    EXPECT_EQ(isSafeText(GetParam().text), GetParam().safe);
}

const TextCase kTextCases[] = {
    {"Empty", "", true},
    {"NoMarkup", "just text", true},
    {"DeepestAllowed", repeat("<a>", kMaxElementDepth) + repeat("</a>", kMaxElementDepth), true},
    {"OneTooDeep", kDeep, false},
    {"OneTooDeepAndEmpty", repeat("<a>", kMaxElementDepth) + "<a/>", false},
    {"FlatAndLong", "<r>" + repeat("<m a='1'/>", 100000) + "</r>", true},
    {"FlatPairs", "<r>" + repeat("<m>x</m>", 1000) + "</r>", true},
    {"MostAttributes", "<a" + repeat(" x=''", kMaxAttributes) + "/>", true},
    {"OneAttributeTooMany", "<a" + repeat(" x=''", kMaxAttributes + 1) + "/>", false},
    // Closing tags that the parser does not see.
    {"ClosedInComment", falselyClosed("<!-- </b> -->"), false},
    {"ClosedInCdata", falselyClosed("<![CDATA[</b>]]>"), false},
    {"ClosedInUnknown", falselyClosed("<!x </b >"), false},
    {"ClosedInQuotes", falselyClosed("<c x='</b>'>"), false},
    {"ClosedInDoubleQuotes", falselyClosed("<c x=\"/></b>\">"), false},
    {"ClosedInNumericReference", falselyClosed("&#x</b>x41;"), false},
    {"ClosedBehindSwallowedBracket", kUtf8 + falselyClosed("\xC3</b>"), false},
    {"ClosedBehindBomSwallowedBracket", "\xEF\xBB\xBF" + falselyClosed("\xF0 <</b>"), false},
    {"ClosedBehindSwallowedLineEnd", kUtf8 + falselyClosed("\xE2\r\n</b>"), false},
    {"LetterOfNoUtf8AtLineEnd", kUtf8 + "\r\n<a>Caf\xE9.\r\n</a>\r\n", true},
    {"ClosedBehindLatin1Letter", kLatin1 + falselyClosed("\xC3</b>"), true},
    {"ClosedBehindByteOfNoCharacter", kUtf8 + falselyClosed("\xFF</b>"), true},
    {"ClosedAfterComment", falselyClosed("<!-- <b> --></b>"), true},
    // Openings that the parser sees in places where they are easily missed.
    {"OpenedBehindSwallowedQuote", "<a v='&#x'x1;'>" + kDeep + "'", false},
    {"OpenedBehindShortComment", "<!-->-->" + kDeep, false},
    {"OpenedBehindDeclaration", "<?XML x>" + kDeep, false},
    {"OpenedBehindDoctype", "<!DOCTYPE a>" + kDeep, false},
    {"OpenedBehindUnquotedValue", "<a b=c/d=>" + kDeep, true}, // the parser stops at the slash
    {"OpenedInComment", "<a><!--" + kDeep + "--></a>", true},
    {"OpenedInQuotes", "<a x='" + kDeep + "'/>", true},
    {"OpenedBehindNul", std::string("<a/>\0", 5) + kDeep, true},
    {"OpenedBehindMismatch", "<a></b></a/>" + kDeep, false},
    // Where the parser stops by itself, so that nothing behind counts.
    {"StopsInComment", "<a><!-- " + kDeep, true},
    {"StopsInDeclaration", "<?xml version>" + kDeep, true},
    {"StopsAtBlankForName", kUtf8 + "<\xEF\xBB\xBF>" + kDeep, true},
    {"StopsInText", "<a>text", true},
    {"StopsAtReferenceWithoutEnd", "<a>&#x1" + kDeep, true},
    {"StopsAtReferenceWithoutHexDigits", "<a>&#xg;" + kDeep, true},
    {"StopsAtReferenceWithoutDigits", "<a>&#g;" + kDeep, true},
    // Where the parser reads behind its buffer or does not return.
    {"CharacterCutOffInText", kUtf8 + "<a>x\xF0", false},
    {"ByteOrderMarkCutOff", "<a/>\xEF", false},
    {"DeclarationCutOff", "<?xml ", false},
    // What is not decoded to find out.
    {"EncodingInReferences", "<?xml encoding='&#x55;TF-8'?><a/>", false},
};

std::string rowName(const testing::TestParamInfo<TextCase>& row) { return row.param.name; }

INSTANTIATE_TEST_SUITE_P(, XmlGuardText, testing::ValuesIn(kTextCases), rowName);

bool isSafe(const std::string& path) {
    const File file = openRegularFile(path);
    return file != nullptr && isSafeToParse(file.get());
}

TEST(XmlGuardFile, OnlyReadableRegularFilesAreSafe) {
    std::string directory = testing::TempDir() + "xmlguardXXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    const std::string file = directory + "/file.xml";
    const std::string fifo = directory + "/fifo.xml";
    std::ofstream(file) << "<a/>";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);

    EXPECT_TRUE(isSafe(file));
    EXPECT_FALSE(isSafe(directory));
    EXPECT_FALSE(isSafe(fifo));
    EXPECT_FALSE(isSafe(directory + "/absent.xml"));
    std::ofstream(file) << kDeep;
    EXPECT_FALSE(isSafe(file));

    EXPECT_EQ(
        std::remove(file.c_str()) + std::remove(fifo.c_str()) + std::remove(directory.c_str()), 0);
}

} // namespace
} // namespace common
