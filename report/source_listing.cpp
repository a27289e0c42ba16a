/* source_listing.cpp -- the annotated listing page of one source file. */
#include "report/source_listing.h"

#include <algorithm>
#include <cstring>

#include "analysis/comment_parser.h"
#include "analysis/coverage_store.h"
#include "analysis/percent_format.h"
#include "report/colors.h"
#include "report/html_escape.h"
#include "report/line_digits.h"
#include "report/naming.h"
#include "report/page_foot.h"
#include "report/page_writer.h"
#include "report/source_reader.h"

static const char HEAD_START[] =
    "<html>\n"
    "<head>\n";
static const char HEAD_TITLE[] = "<title>Listing of %s</title>\n";
static const char HEAD_BODY[] =
    "</head>\n"
    "<body bgcolor=\"FFFFFF\">\n";
static const char HEADING_INDENT[] = "<h4>&#160;&#160;&#160;&#160;&#160;";
static const char HEADING_NAME[] = "&#160;&#160;&#160;&#160;&#160;&#160;&#160;%s";
/* The second "&#160" has no semicolon; browsers read it all the same. */
static const char HEADING_PERCENTS[] =
    "&#160;&#160;&#160;&#160;&#160;&#160;&#160;<font size=-1>%s:&#160 %5.2f&#160;%%func"
    "&#160;&#160;&#160;&#160; %5.2f&#160;%%block</font></h4>\n";
static const char HEAD_RULE[] = "<hr size=%d noshade>\n";
static const char PRE_START[] = "<pre>\n";
static const char PRE_END[] = "</pre>\n";
static const char LINE_END[] = "</a>\n";

/* Leading blanks the line's first colour looks past. */
static const size_t LOOK_AHEAD_MAX = 255;
/* Numbers the line-number column shows at most. */
static const uint32_t LINE_NUMBER_MAX = 999999;

int classifyPosition(uint64_t count, uint32_t blocks, uint32_t executed, bool lastBlockAdjusted,
                     bool newFunction, bool reference)
{
    if (reference) {
        if (count == 0)
            return COLOR_COVERED;
        if (newFunction || count == NEVER_EXECUTED)
            return COLOR_UNCOVERED_FUNCTION;
        return COLOR_UNCOVERED_BLOCK;
    }
    if (count == 0)
        return COLOR_UNCOVERED_BLOCK;
    if (count == NEVER_EXECUTED)
        return COLOR_UNCOVERED_FUNCTION;
    /* An adjusted last block that did not run does not make a position
     * partial. */
    if (blocks != executed && !(lastBlockAdjusted && blocks == executed + 1))
        return COLOR_PARTIAL;
    return COLOR_COVERED;
}

static int classifyNode(const block_list_node *node, bool reference)
{
    return classifyPosition(node->count, node->numBlocks, node->numExecuted, node->lastBlockAdjusted,
                            node->newFunction, reference);
}

/* Decimal digits of `value` ending at `end`; returns the first digit. */
static char *digitsBefore(char *end, uint32_t value)
{
    do {
        *--end = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return end;
}

/* The same bytes as "%6u) ", without the cost of fprintf per line. */
static void putLineNumber(PageWriter &page, uint32_t line)
{
    char text[16];
    char *end = text + sizeof text;
    *--end = ' ';
    *--end = ')';
    char *digits = digitsBefore(end, line > LINE_NUMBER_MAX ? LINE_NUMBER_MAX : line);
    while (end - digits < 6)
        *--digits = ' ';
    page.put(digits, static_cast<size_t>(text + sizeof text - digits));
}

void writeLineNumber(FILE *page, uint32_t line)
{
    PageWriter writer(page);
    putLineNumber(writer, line);
}

/* The line colours' texts, each in a room of its own so that a short one
 * is copied in one fixed-size move, and which of them read the same (two
 * colours may be given one text). */
struct LineColours {
    static const size_t ROOM = 32;
    char text[8][ROOM];
    size_t length[8];
    bool same[8][8];
    LineColours()
    {
        for (int colour = 0; colour < 8; ++colour) {
            const char *value = takeBGColor(colour);
            length[colour] = value != nullptr ? strlen(value) : 0;
            memset(text[colour], 0, ROOM);
            if (value != nullptr && length[colour] <= ROOM)
                memcpy(text[colour], value, length[colour]);
        }
        for (int one = 0; one < 8; ++one) {
            for (int other = 0; other < 8; ++other) {
                const char *a = takeBGColor(one), *b = takeBGColor(other);
                same[one][other] = a == b || (a != nullptr && b != nullptr && strcmp(a, b) == 0);
            }
        }
    }
};

/* Whether each line in turn is infeasible: the ranges are sorted and
 * apart, and the lines are asked for in ascending order. */
class InfeasibleLines {
public:
    explicit InfeasibleLines(const parser *infeasible)
        : ranges(infeasible != nullptr ? &infeasible->disabled_ranges() : nullptr)
    {
    }
    bool at(uint32_t line)
    {
        if (ranges == nullptr)
            return false;
        while (next < ranges->size() && (*ranges)[next].second < line)
            ++next;
        return next < ranges->size() && (*ranges)[next].first <= line;
    }

private:
    const std::vector<std::pair<uint64_t, uint64_t>> *ranges;
    size_t next = 0;
};

/* A line's opening, in one piece: its number as "%6u) " (numbers above
 * the column's width as putLineNumber writes them), then its anchor and
 * colour. */
static void putLineOpening(PageWriter &page, const LineDigits &digits, uint32_t line, const LineColours &colours,
                           int colour)
{
    static const char ANCHOR[] = "<a name=\"l";
    static const char STYLE[] = "\" style=\"background-color: ";
    static const char CLOSE[] = "\">";
    size_t length = digits.length();
    size_t colourLength = colours.length[colour];
    if (line > LINE_NUMBER_MAX || colourLength > LineColours::ROOM) {
        putLineNumber(page, line);
        page.put(ANCHOR);
        page.put(digits.first, length);
        page.put(STYLE);
        page.put(takeBGColor(colour), colourLength);
        page.put(CLOSE);
        return;
    }
    /* Fixed-size moves: each may run past what counts, and the next one
     * overwrites the excess. */
    char *out = page.room(8 + 2 + sizeof ANCHOR + 2 * 16 + sizeof STYLE + LineColours::ROOM + sizeof CLOSE);
    memcpy(out, "        ", 8);
    out += length < 6 ? 6 - length : 0;
    memcpy(out, digits.first, 16);
    out += length;
    memcpy(out, ") ", 2);
    out += 2;
    memcpy(out, ANCHOR, sizeof ANCHOR - 1);
    out += sizeof ANCHOR - 1;
    memcpy(out, digits.first, 16);
    out += length;
    memcpy(out, STYLE, sizeof STYLE - 1);
    out += sizeof STYLE - 1;
    memcpy(out, colours.text[colour], LineColours::ROOM);
    out += colourLength;
    memcpy(out, CLOSE, sizeof CLOSE - 1);
    out += sizeof CLOSE - 1;
    page.commit(out);
}

/* WriteSrcFileHeader: the page head, titled with the part of the path
 * after its last "/". */
static void WriteSrcFileHeader(PageWriter &page, const ListingSource &file, bool reference)
{
    const char *name = pathBaseName(file.path);
    page.putLiteral(HEAD_START);
    const HtmlValue shownName(name);
    page.putFormatted(HEAD_TITLE, shownName.c_str());
    page.putLiteral(HEAD_BODY);
    page.putLiteral(HEADING_INDENT);
    page.putFormatted(HEADING_NAME, shownName.c_str());
    page.putFormatted(HEADING_PERCENTS, reference ? "miss rate" : "coverage", roundHalfUp2(file.funcPercent),
                      roundHalfUp2(file.blockPercent));
    page.putFormatted(HEAD_RULE, 1);
    page.putLiteral(PRE_START);
}

/* WriteSrcFileFooter. */
static void WriteSrcFileFooter(FILE *page, const ListingOptions &options)
{
    fputs(PRE_END, page);
    writePageFoot(page, options.ownerAddress, options.ownerName);
}

/* The four characters of markup, which source text shows as entities. */
static const EscapeSet SOURCE_ESCAPES{{'"', "&quot;"}, {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}};

/* Copies source text into the page: the four characters of markup as
 * entities, a line feed as the end of the line's anchor. */
static void copyText(PageWriter &page, const char *text, size_t length)
{
    /* A line feed can only end a line's text: it closes the anchor after
     * the rest is escaped. */
    if (length == 0)
        return;
    bool lineEnd = text[length - 1] == '\n';
    page.putEscaped(text, length - lineEnd, SOURCE_ESCAPES);
    if (lineEnd)
        page.putLiteral(LINE_END);
}

/* Copies the reader's next line into the page as copyText does, finding
 * its end while copying: for a line without recorded positions, the
 * larger part, whose text is wanted only once. */
static void copyNextLine(PageWriter &page, SourceLineReader &reader)
{
    const char *text;
    size_t length;
    while (reader.available(&text, &length)) {
        size_t piece = std::min(length, PageWriter::ESCAPED_PIECE);
        size_t taken;
        page.commit(escapeUntil<true>(page.room(piece * EscapeSet::LONGEST + 16), text, piece, SOURCE_ESCAPES,
                                      &taken));
        reader.take(taken);
        if (text[taken - 1] == '\n') {
            page.putLiteral(LINE_END);
            return;
        }
    }
}

static bool appendMarkers(MarkerLine *marker, const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (!markerLineAppend(marker, markerFor(text[i])))
            return false;
    }
    return true;
}

/* The recorded positions of `line`, ascending by column (each column has
 * one node). */
static void linePositions(const coverage_list &store, uint32_t line, std::vector<const block_list_node *> &out)
{
    out.clear();
    for (const block_list_node *node = store.linePositions(line); node != nullptr; node = node->next) {
        if (node->line == line && node->column != 0)
            out.push_back(node);
    }
    if (out.size() > 1)
        std::sort(out.begin(), out.end(),
                  [](const block_list_node *a, const block_list_node *b) { return a->column < b->column; });
}

static const block_list_node *positionAt(const std::vector<const block_list_node *> &positions, uint32_t column)
{
    for (const block_list_node *node : positions) {
        if (node->column == column)
            return node;
    }
    return nullptr;
}

static bool writeListingOf(FILE *page, SourceLineReader &reader, const ListingSource &file,
                           const ListingOptions &options, MarkerLine *marker)
{
    /* The head goes through the page writer too, so that a page comes out
     * in one piece. */
    PageWriter out(page);
    WriteSrcFileHeader(out, file, options.reference);

    int currentClass = options.reference ? COLOR_COVERED : COLOR_UNKNOWN;
    const COMP *function = file.functionsByLine;
    std::vector<const block_list_node *> positions;
    const char *text;
    size_t length;
    uint32_t line = 0;
    LineDigits digits;
    const LineColours colours;
    InfeasibleLines infeasibleLines(file.infeasible);
    bool started = false;
    while (reader.available(&text, &length)) {
        ++line;
        started = true;

        /* 1. Under -ref a function's first line takes the function's
         *    colour. */
        if (options.reference) {
            while (function != nullptr && function->line < static_cast<int64_t>(line))
                function = function->next_by_line;
            if (function != nullptr && function->line == static_cast<int64_t>(line))
                currentClass = function->not_in_reference ? COLOR_UNCOVERED_FUNCTION : COLOR_COVERED;
        }
        bool infeasible = infeasibleLines.at(line);
        digits.next();

        /* 2. A line with recorded positions opens in the colour of the
         *    position where its text begins, past the leading blanks; one
         *    without (most lines) in the colour in force, and is copied as
         *    it is read. */
        linePositions(*file.store, line, positions);
        const bool plain = positions.empty();
        if (!plain) {
            reader.nextLine(&text, &length);
            size_t blanks = 0;
            while (blanks < LOOK_AHEAD_MAX && blanks < length && (text[blanks] == ' ' || text[blanks] == '\t'))
                ++blanks;
            if (const block_list_node *node = positionAt(positions, static_cast<uint32_t>(blanks + 1)))
                currentClass = classifyNode(node, options.reference);
        }
        putLineOpening(out, digits, line, colours, infeasible ? COLOR_INFEASIBLE : currentClass);
        if (plain) {
            copyNextLine(out, reader);
            marker->length = 0;
            marker->text[0] = '\0';
            continue;
        }

        /* 3. The text, with a colour change at each recorded position whose
         *    colour differs from the one in force. Only a feasible line
         *    can have markers. */
        bool markers = options.counts && !infeasible;
        /* The text goes out in pieces from one position to the next (a
         * position's character begins the piece after its colour change);
         * the marker line has a '^' under each position. */
        size_t copied = 0, marked = 0;
        for (const block_list_node *node : positions) {
            size_t at = node->column - 1;
            if (at >= length)
                break;
            copyText(out, text + copied, at - copied);
            copied = at;
            if (markers && (!appendMarkers(marker, text + marked, at - marked) || !markerLineAppend(marker, '^')))
                return false;
            marked = at + 1;
            int newClass = classifyNode(node, options.reference);
            if (!infeasible && !colours.same[newClass][currentClass])
                changeColor(out, newClass, currentClass);
            currentClass = newClass;
        }
        copyText(out, text + copied, length - copied);
        if (markers && !appendMarkers(marker, text + marked, length - marked))
            return false;

        /* 4. Below a finished line, its counters. */
        if (markers && text[length - 1] == '\n' && memchr(marker->text, '^', marker->length) != nullptr) {
            out.flush();
            writeCounterLines(page, marker, *file.store, line,
                              takeBGColor(options.floatingInfo ? currentClass : COLOR_INFO));
        }
        marker->length = 0;
        marker->text[0] = '\0';
    }
    out.flush();
    if (started)
        WriteSrcFileFooter(page, options);
    return true;
}

bool writeSourceListing(FILE *page, FILE *source, const ListingSource &file, const ListingOptions &options,
                        MarkerLine *marker, std::vector<char> &readBuffer)
{
    if (file.bytes != nullptr) {
        SourceLineReader reader(file.bytes, file.size);
        return writeListingOf(page, reader, file, options, marker);
    }
    SourceLineReader reader(source, readBuffer);
    return writeListingOf(page, reader, file, options, marker);
}
