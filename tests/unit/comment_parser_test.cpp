// Comment parser: which lines the markers disable, through literals, comment
// forms and their quirks, nesting, function extension and unusual files.
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

namespace {

using Lines = std::vector<unsigned long>;

struct Markers {
    std::vector<std::string> one{"NF"};
    std::vector<std::string> begin{"NF-BEGIN"};
    std::vector<std::string> end{"NF-END"};
};

// The lines among 0 .. 12 that a parser of `source` disables.
Lines DisabledIn(const std::string &source, Markers m = Markers())
{
    testsupport::ScratchDir dir;
    parser p(dir.write("s.c", source).c_str(), m.one, m.begin, m.end);
    Lines lines;
    for (unsigned long l = 0; l <= 12; ++l) {
        EXPECT_NE(p.is_disabled_line(l), p.is_enabled_line(l));
        if (p.is_disabled_line(l))
            lines.push_back(l);
    }
    return lines;
}

// A line chain as order_func leaves it, made the current module's.
struct Chain {
    std::vector<COMP> comps;
    explicit Chain(const std::vector<int> &lines) : comps(lines.size())
    {
        for (size_t i = 0; i < lines.size(); ++i) {
            comps[i].line = lines[i];
            comps[i].next_by_line = i + 1 < lines.size() ? &comps[i + 1] : nullptr;
        }
        first_func_line = &comps[0];
    }
    ~Chain() { first_func_line = nullptr; }
};

}  // namespace

TEST(CommentParser, MarkerMustBeTheWholeTrimmedText)
{
    EXPECT_EQ(DisabledIn("// NF\nint a; // NF   \nint b; // NF and more\nc; //nf\n"), Lines({1, 2}));
    EXPECT_EQ(DisabledIn("x\n/*NF*/ y\n/**** NF ****/\n\t/*\t NF\n */ z\n"), Lines({2, 3, 4}));
    EXPECT_EQ(DisabledIn("a; // NF\r\nb;\n"), Lines({}));  // a carriage return is not trimmed
}

TEST(CommentParser, LiteralsHideCommentMarkers)
{
    EXPECT_EQ(DisabledIn("s = \"// NF\";\nt = \"/* NF */\";\nu;\n"), Lines({}));
    // An escaped quote does not end the literal, so the // stays inside it.
    EXPECT_EQ(DisabledIn("s = \"a\\\" // NF\";\nv;\n"), Lines({}));
    // A quote inside a character literal, and an escaped apostrophe.
    EXPECT_EQ(DisabledIn("c = '\"'; // NF\nd = '\\''; // NF\ne;\n"), Lines({1, 2}));
    // Quotes inside comments are ordinary characters; right after a line
    // comment ends, an apostrophe opens a literal as usual.
    EXPECT_EQ(DisabledIn("/* it's */ x;\ny; // NF\nz;\n"), Lines({2}));
    EXPECT_EQ(DisabledIn("// c\n'/' // NF\n;\n"), Lines({2}));
}

TEST(CommentParser, ShortBlockCommentsRunOnToTheNextClose)
{
    // "/**/" and "/*a*/" do not close at their own "*/": the marker comment
    // after them is swallowed into their text.
    EXPECT_EQ(DisabledIn("/**/ x; /* NF */\ny;\n"), Lines({}));
    EXPECT_EQ(DisabledIn("/*a*/ x; /* NF */\ny;\n"), Lines({}));
    EXPECT_EQ(DisabledIn("/*ab*/ x; /* NF */\ny;\n"), Lines({1}));
    // Trimmed, the swallowing comment's text can still equal a marker; it
    // starts on its own line.
    EXPECT_EQ(DisabledIn("/**/\n/* NF-BEGIN */\nx;\n/* NF-END */\ny;\n"), Lines({1, 2, 3, 4}));
}

TEST(CommentParser, BlocksPairInnermostFirstAndOthersRunToTheEndOrAreIgnored)
{
    EXPECT_EQ(DisabledIn("1\n//NF-BEGIN\n3\n//NF-BEGIN\n5\n//NF-END\n7\n//NF-END\n9\n"), Lines({2, 3, 4, 5, 6, 7, 8}));
    // Unmatched begin: through the last line, which counts an unterminated
    // last line and not a terminating newline.
    EXPECT_EQ(DisabledIn("1\n2\n/* NF-BEGIN */\n4\n5\n"), Lines({3, 4, 5}));
    EXPECT_EQ(DisabledIn("1\n2\n/* NF-BEGIN */\n4\n5"), Lines({3, 4, 5}));
    // A comment spanning lines starts on its first line.
    EXPECT_EQ(DisabledIn("1\n/*\n NF-BEGIN\n*/\n5\n/* NF-END\n*/\n8\n"), Lines({2, 3, 4, 5, 6}));
    // The scan stops at the pair (newline, end of file), so a line comment
    // on the last line never closes; a block comment there does.
    EXPECT_EQ(DisabledIn("a\nb // NF\n"), Lines({}));
    EXPECT_EQ(DisabledIn("a\nb /* NF */\n"), Lines({2}));
    // An end marker without a begin marker is ignored (with the warning
    // that the fast files' golden case shows).
    EXPECT_EQ(DisabledIn("a\n// NF-END\n// NF-BEGIN\nb\n// NF-END\nc\n"), Lines({3, 4, 5}));
}

TEST(CommentParser, OneLineMarkerOnAFunctionsFirstLineCoversTheFunction)
{
    {
        Chain chain({3, 7, 7, 10});
        // To the line before the next function, for // and /* */ alike.
        EXPECT_EQ(DisabledIn("1\n2\nint f() { // NF\n4\n5\n6\n7\n8\n9\n10\n11\n"), Lines({3, 4, 5, 6}));
        // Two functions begin on line 7: the made-up end lands on line 7.
        EXPECT_EQ(DisabledIn("1\n2\n3\n4\n5\n6\n/* NF */ int g() {\n8\n9\n10\n11\n"), Lines({7}));
        // The last function: to the end of the file.
        EXPECT_EQ(DisabledIn("1\n2\n3\n4\n5\n6\n7\n8\n9\nint h() { /* NF */\n11\n12\n"), Lines({10, 11, 12}));
        // Not a function's first line: just the line. Several markers, each
        // finding its function.
        EXPECT_EQ(DisabledIn("1\n2\n3 // NF\n4 // NF\n5\n6\n7 // NF\n8\n9\n10\n"), Lines({3, 4, 5, 6, 7}));
    }
    Chain chain({5, 9});
    unsigned long end = 99;
    EXPECT_TRUE(is_func_bound(5, &end));
    EXPECT_EQ(end, 8u);
    EXPECT_TRUE(is_func_bound(9, &end));
    EXPECT_EQ(end, 0u);
    EXPECT_FALSE(is_func_bound(6, &end));
    EXPECT_FALSE(is_func_bound(10, nullptr));
}

TEST(CommentParser, InactiveParsers)
{
    // Begin markers alone, or end markers alone, do nothing and say nothing.
    Markers beginOnly, endOnly, oneOnly;
    beginOnly.one.clear();
    beginOnly.end.clear();
    EXPECT_EQ(DisabledIn("// NF-BEGIN\nx\n", beginOnly), Lines({}));
    endOnly.one.clear();
    endOnly.begin.clear();
    EXPECT_EQ(testsupport::CaptureInChild([&] { DisabledIn("// NF-END\nx\n", endOnly); }).err, "");
    // One-line markers alone are enough.
    oneOnly.begin.clear();
    oneOnly.end.clear();
    EXPECT_EQ(DisabledIn("a\nb // NF\nc\n", oneOnly), Lines({2}));
    // A missing file: inactive and silent.
    testsupport::Captured missing = testsupport::CaptureInChild([] {
        Markers m;
        parser p("/nonexistent/file.c", m.one, m.begin, m.end);
        printf("%d %d", p.is_active(), p.is_disabled_line(1));
    });
    EXPECT_EQ(missing.out, "0 0");
    EXPECT_EQ(missing.err, "");
}

TEST(CommentParser, UnusualFilesAreScannedAsText)
{
    // A zero byte ends the scan; bytes 0x80-0xFF are ordinary characters.
    EXPECT_EQ(DisabledIn(std::string("a // NF\nb") + '\0' + " // NF\nc // NF\nd\n"), Lines({1}));
    EXPECT_EQ(DisabledIn("\xff\xfe // NF\n\x80\n"), Lines({1}));
    EXPECT_EQ(DisabledIn(""), Lines({}));
    // A megabyte-long line, and an unterminated block comment of that size.
    std::string longLine(1 << 20, 'x');
    EXPECT_EQ(DisabledIn(longLine + " // NF\n" + longLine + "\n/* NF */\nz\n"), Lines({1, 3}));
    EXPECT_EQ(DisabledIn("a\n/* NF-BEGIN */ /* " + longLine + "\nb\n"), Lines({2, 3}));
}
