// Comment parser: which lines the markers disable, through literals, comment
// forms, nesting, function extension and unusual files.
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

namespace {

struct Markers {
    std::vector<std::string> one{"NF"};
    std::vector<std::string> begin{"NF-BEGIN"};
    std::vector<std::string> end{"NF-END"};
};

std::string WriteSource(const std::string &bytes)
{
    std::string path = "/tmp/vemcov-parser-" + std::to_string(getpid()) + ".c";
    FILE *f = fopen(path.c_str(), "wb");
    fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
    return path;
}

// The disabled lines among 0 .. upTo.
std::vector<unsigned long> Disabled(const parser &p, unsigned long upTo)
{
    std::vector<unsigned long> lines;
    for (unsigned long l = 0; l <= upTo; ++l) {
        EXPECT_NE(p.is_disabled_line(l), p.is_enabled_line(l));
        if (p.is_disabled_line(l))
            lines.push_back(l);
    }
    return lines;
}

std::vector<unsigned long> DisabledIn(const std::string &source, Markers m = Markers(), unsigned long upTo = 12)
{
    std::string path = WriteSource(source);
    parser p(path.c_str(), m.one, m.begin, m.end);
    remove(path.c_str());
    return Disabled(p, upTo);
}

using Lines = std::vector<unsigned long>;

// A line chain as order_func leaves it.
struct Chain {
    std::vector<COMP> comps;
    explicit Chain(const std::vector<int> &lines) : comps(lines.size())
    {
        for (size_t i = 0; i < lines.size(); ++i) {
            comps[i] = COMP{};
            comps[i].line = lines[i];
            comps[i].next_by_line = i + 1 < lines.size() ? &comps[i + 1] : nullptr;
        }
        first_func_line = comps.empty() ? nullptr : &comps[0];
    }
    ~Chain() { first_func_line = nullptr; }
};

}  // namespace

TEST(CommentParser, MarkerMustBeTheWholeTrimmedText)
{
    EXPECT_EQ(DisabledIn("int a; // NF   \nint b;\n"), Lines({1}));
    EXPECT_EQ(DisabledIn("int a;\nint b; // NF and more\nint c;\n"), Lines({}));
    EXPECT_EQ(DisabledIn("x\n/*NF*/ y\n/**** NF ****/\n\t/*\t NF\n */ z\n"), Lines({2, 3, 4}));
    EXPECT_EQ(DisabledIn("x //nf\n// NF\n"), Lines({}));  // case matters; see LastLine below
    // Line numbers start at 1.
    EXPECT_EQ(DisabledIn("// NF\nint a;\n"), Lines({1}));
}

TEST(CommentParser, LiteralsHideCommentMarkers)
{
    EXPECT_EQ(DisabledIn("s = \"// NF\";\nt = \"/* NF */\";\nu;\n"), Lines({}));
    // An escaped quote does not end the literal, so the // stays inside it.
    EXPECT_EQ(DisabledIn("s = \"a\\\" // NF\";\nv;\n"), Lines({}));
    // Character literals: a quote inside one, and an escaped apostrophe.
    EXPECT_EQ(DisabledIn("c = '\"'; // NF\nd = '\\''; // NF\ne;\n"), Lines({1, 2}));
    // Quotes inside comments are ordinary characters.
    EXPECT_EQ(DisabledIn("/* it's */ x;\ny; // NF\nz;\n"), Lines({2}));
    // After a line comment ends, a quote at the start of the next line opens
    // a string as usual.
    EXPECT_EQ(DisabledIn("// c\n\"// NF\";\nw; // NF\nq;\n"), Lines({3}));
}

TEST(CommentParser, ShortBlockCommentsRunOnToTheNextClose)
{
    // "/**/" and "/*a*/" do not close at their own "*/": the marker comment
    // after them is swallowed into their text.
    EXPECT_EQ(DisabledIn("/**/ x; /* NF */\ny;\n"), Lines({}));
    EXPECT_EQ(DisabledIn("/*a*/ x; /* NF */\ny;\n"), Lines({}));
    EXPECT_EQ(DisabledIn("/*ab*/ x; /* NF */\ny;\n"), Lines({1}));
    // The swallowing comment starts on its own line: trimmed, its text can
    // still equal a marker.
    EXPECT_EQ(DisabledIn("/**/\n/* NF-BEGIN */\nx;\n/* NF-END */\ny;\n"), Lines({1, 2, 3, 4}));
}

TEST(CommentParser, BlocksPairInnermostFirstAndOpenBlocksRunToTheEnd)
{
    EXPECT_EQ(DisabledIn("a\n// NF-BEGIN\nb\n// NF-END\nc\n"), Lines({2, 3, 4}));
    EXPECT_EQ(DisabledIn("1\n//NF-BEGIN\n3\n//NF-BEGIN\n5\n//NF-END\n7\n//NF-END\n9\n"), Lines({2, 3, 4, 5, 6, 7, 8}));
    // Unmatched begin: through the last line, which counts an unterminated
    // last line and not a terminating newline.
    EXPECT_EQ(DisabledIn("1\n2\n/* NF-BEGIN */\n4\n5\n"), Lines({3, 4, 5}));
    EXPECT_EQ(DisabledIn("1\n2\n/* NF-BEGIN */\n4\n5"), Lines({3, 4, 5}));
    // A block comment spanning lines starts on its first line and ends on
    // its last.
    EXPECT_EQ(DisabledIn("1\n/*\n NF-BEGIN\n*/\n5\n/* NF-END\n*/\n8\n"), Lines({2, 3, 4, 5, 6}));
}

TEST(CommentParser, UnmatchedEndMarkerIsReportedAndIgnored)
{
    std::string path = WriteSource("a\n// NF-END\n// NF-BEGIN\nb\n// NF-END\nc\n");
    Captured run = CaptureInChild([&] {
        Markers m;
        parser p(path.c_str(), m.one, m.begin, m.end);
        for (unsigned long l = 1; l <= 6; ++l)
            printf("%d", p.is_disabled_line(l));
    });
    remove(path.c_str());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "001110");
    EXPECT_EQ(run.err, "WARNING: An ending marker in file " + path +
                           ", line 2 doesn't match any begining marker. Ignored\n");
}

TEST(CommentParser, LastLineAndLineTotals)
{
    std::string path = WriteSource("a\nb // NF\n");
    Markers m;
    parser p(path.c_str(), m.one, m.begin, m.end);
    EXPECT_TRUE(p.is_active());
    EXPECT_EQ(p.line_total(), 2u);
    // The scan stops at the pair (newline, end of file), so a line comment
    // on the last line never closes and is not a marker.
    EXPECT_EQ(Disabled(p, 4), Lines({}));
    remove(path.c_str());
    // Closed block comments on the last line still count.
    EXPECT_EQ(DisabledIn("a\nb /* NF */\n"), Lines({2}));
}

TEST(CommentParser, OneLineMarkerOnAFunctionsFirstLineCoversTheFunction)
{
    {
        Chain chain({3, 7, 7, 10});
        // Function at 3 runs to the line before the next one (7).
        EXPECT_EQ(DisabledIn("1\n2\nint f() { // NF\n4\n5\n6\n7\n8\n9\n10\n11\n"), Lines({3, 4, 5, 6}));
        // Two functions begin on line 7: the made-up end lands on line 7.
        EXPECT_EQ(DisabledIn("1\n2\n3\n4\n5\n6\n/* NF */ int g() {\n8\n9\n10\n11\n"), Lines({7}));
        // The last function: to the end of the file.
        EXPECT_EQ(DisabledIn("1\n2\n3\n4\n5\n6\n7\n8\n9\nint h() { /* NF */\n11\n12\n"), Lines({10, 11, 12}));
        // Not a function's first line: just the line.
        EXPECT_EQ(DisabledIn("1\n2\n3\n4 // NF\n5\n6\n"), Lines({4}));
        // Several markers in one file, in order; each finds its function.
        EXPECT_EQ(DisabledIn("1\n2\n3 // NF\n4\n5\n6\n7 // NF\n8\n9\n10\n"), Lines({3, 4, 5, 6, 7}));
    }
    {
        Chain chain({5, 9});
        unsigned long end = 99;
        EXPECT_TRUE(is_func_bound(5, &end));
        EXPECT_EQ(end, 8u);
        EXPECT_TRUE(is_func_bound(9, &end));
        EXPECT_EQ(end, 0u);
        EXPECT_FALSE(is_func_bound(6, &end));
        EXPECT_FALSE(is_func_bound(10, nullptr));
        EXPECT_TRUE(is_func_bound(5, nullptr));
    }
    EXPECT_FALSE(is_func_bound(1, nullptr));  // no chain
}

TEST(CommentParser, InactiveParsers)
{
    // Begin markers alone, or end markers alone, do nothing.
    Markers beginOnly;
    beginOnly.one.clear();
    beginOnly.end.clear();
    EXPECT_EQ(DisabledIn("// NF-BEGIN\nx\n", beginOnly), Lines({}));
    Markers endOnly;
    endOnly.one.clear();
    endOnly.begin.clear();
    Captured quiet = CaptureInChild([&] { DisabledIn("// NF-END\nx\n", endOnly); });
    EXPECT_EQ(quiet.err, "");
    // A missing file: inactive and silent.
    Captured missing = CaptureInChild([] {
        Markers m;
        parser p("/nonexistent/file.c", m.one, m.begin, m.end);
        printf("%d %d %llu", p.is_active(), p.is_disabled_line(1), (unsigned long long)p.line_total());
    });
    EXPECT_EQ(missing.out, "0 0 0");
    EXPECT_EQ(missing.err, "");
    // One-line markers alone are enough.
    Markers oneOnly;
    oneOnly.begin.clear();
    oneOnly.end.clear();
    EXPECT_EQ(DisabledIn("a\nb // NF\nc\n", oneOnly), Lines({2}));
}

TEST(CommentParser, UnusualFilesAreScannedAsText)
{
    // A zero byte ends the scan.
    EXPECT_EQ(DisabledIn(std::string("a // NF\nb") + '\0' + " // NF\nc // NF\nd\n"), Lines({1}));
    // Bytes 0x80-0xFF are ordinary characters.
    EXPECT_EQ(DisabledIn("\xff\xfe // NF\n\x80\n"), Lines({1}));
    // An empty file.
    EXPECT_EQ(DisabledIn(""), Lines({}));
    // A megabyte-long line, and an unterminated block comment of the same size.
    std::string longLine(1 << 20, 'x');
    EXPECT_EQ(DisabledIn(longLine + " // NF\n" + longLine + "\n/* NF */\nz\n"), Lines({1, 3}));
    EXPECT_EQ(DisabledIn("a\n/* NF-BEGIN */ /* " + longLine + "\nb\n"), Lines({2, 3}));
    // Many unmatched begin markers on a long file stay cheap.
    std::string many;
    for (int i = 0; i < 20000; ++i)
        many += "// NF-BEGIN\n";
    std::string path = WriteSource(many + "end\n");
    Markers m;
    parser p(path.c_str(), m.one, m.begin, m.end);
    remove(path.c_str());
    EXPECT_FALSE(p.is_disabled_line(0));
    EXPECT_TRUE(p.is_disabled_line(1));
    EXPECT_TRUE(p.is_disabled_line(20001));
    EXPECT_FALSE(p.is_disabled_line(20002));
}

TEST(CommentParser, StripComment)
{
    std::string text = " */\t NF x \n*/ ";
    parser::strip_comment(text);
    EXPECT_EQ(text, "NF x");
    text = "/ * \t\n";
    parser::strip_comment(text);
    EXPECT_EQ(text, "");
    text = "\rNF\r";  // carriage returns are not trimmed
    parser::strip_comment(text);
    EXPECT_EQ(text, "\rNF\r");
}
