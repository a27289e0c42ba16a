/* html5_file_page.cpp -- the modern view's page of one source file. */
#include "report/html5_file_page.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "analysis/coverage_store.h"
#include "analysis/percent_format.h"
#include "report/colors.h"
#include "report/line_digits.h"
#include "report/source_listing.h"

namespace {

/* One line of the source: where its text lies in the file's bytes (without
 * its line end: "\n", "\r\n" or a lone "\r"). */
struct SourceLine {
    size_t start;
    size_t length;
};

std::vector<SourceLine> splitLines(std::string_view bytes)
{
    std::vector<SourceLine> lines;
    /* Room for lines of 16 bytes on average (source lines are longer), so
     * that the vector is not grown and no count goes first. */
    lines.reserve(bytes.size() / 16 + 1);
    size_t start = 0;
    if (memchr(bytes.data(), '\r', bytes.size()) == nullptr) {
        /* Line feeds only (the usual file): found by the library's search. */
        const char *data = bytes.data();
        for (const char *at; (at = static_cast<const char *>(memchr(data + start, '\n', bytes.size() - start)));) {
            size_t end = static_cast<size_t>(at - data);
            lines.push_back(SourceLine{start, end - start});
            start = end + 1;
        }
        if (start < bytes.size())
            lines.push_back(SourceLine{start, bytes.size() - start});
        return lines;
    }
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != '\n' && bytes[i] != '\r')
            continue;
        lines.push_back(SourceLine{start, i - start});
        if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
            ++i;
        start = i + 1;
    }
    if (start < bytes.size())
        lines.push_back(SourceLine{start, bytes.size() - start});
    return lines;
}

bool endsWith(const char *path, const char *suffix)
{
    size_t a = strlen(path), b = strlen(suffix);
    return a >= b && strcmp(path + a - b, suffix) == 0;
}

bool isFortran(const char *path)
{
    for (const char *suffix : {".f", ".F", ".f77", ".f90", ".F90", ".f95", ".f03", ".f08", ".for", ".FOR"})
        if (endsWith(path, suffix))
            return true;
    return false;
}

/* The first place in [p, end) where `first` is followed by `second`. */
const char *findPair(const char *p, const char *end, char first, char second)
{
    while (p + 1 < end) {
        const char *at = static_cast<const char *>(memchr(p, first, static_cast<size_t>(end - 1 - p)));
        if (at == nullptr)
            return nullptr;
        if (at[1] == second)
            return at;
        p = at + 1;
    }
    return nullptr;
}

/* Lines that hold no code: blank, or only a comment (C and C++ comments,
 * and '!' comments in Fortran sources). String literals are not looked at:
 * a comment opener inside one is taken as a comment, which at worst ends a
 * colour early. */
std::vector<unsigned char> codelessLines(std::string_view bytes, const std::vector<SourceLine> &lines, bool fortran)
{
    std::vector<unsigned char> codeless(lines.size() + 2, 0);
    bool inBlock = false;
    for (size_t n = 0; n < lines.size(); ++n) {
        const char *p = bytes.data() + lines[n].start;
        const char *end = p + lines[n].length;
        bool code = false;
        while (p < end) {
            if (inBlock) {
                const char *close = findPair(p, end, '*', '/');
                if (close == nullptr)
                    break;
                inBlock = false;
                p = close + 2;
                continue;
            }
            char c = *p;
            if (c == ' ' || c == '\t' || c == '\f' || c == '\v') {
                ++p;
                continue;
            }
            if (c == '/' && p + 1 < end && p[1] == '/')
                break;
            if (c == '/' && p + 1 < end && p[1] == '*') {
                inBlock = true;
                p += 2;
                continue;
            }
            if (fortran && c == '!')
                break;
            code = true;
            break;
        }
        codeless[n + 1] = !code;
        /* A block comment opened after code on this line still runs on. */
        if (code) {
            const char *q = p;
            while (q + 1 < end) {
                if (!inBlock) {
                    /* Two slashes end the line's comments; slash and star open one. */
                    const char *slash = static_cast<const char *>(memchr(q, '/', static_cast<size_t>(end - 1 - q)));
                    if (slash == nullptr || slash[1] == '/')
                        break;
                    inBlock = slash[1] == '*';
                    q = slash + (inBlock ? 2 : 1);
                } else {
                    const char *close = findPair(q, end, '*', '/');
                    if (close == nullptr)
                        break;
                    inBlock = false;
                    q = close + 2;
                }
            }
        }
    }
    return codeless;
}

struct Point {
    uint32_t line;
    uint32_t column;
    bool operator<(const Point &o) const { return line != o.line ? line < o.line : column < o.column; }
    bool operator<=(const Point &o) const { return !(o < *this); }
};

/* A painted stretch: [start, end) in (line, column), its class, and the
 * position it comes from. */
struct Stretch {
    Point start;
    Point end;
    int colour;
    const PositionReport *position;
};

int classOf(const PositionReport &p, bool reference)
{
    return classifyPosition(p.neverCalled ? NEVER_EXECUTED : p.count, p.blocks, p.executed, false, p.newFunction,
                            reference);
}

std::vector<Stretch> stretchesOf(const ModuleReport &module, std::vector<unsigned char> stop, uint32_t lineCount,
                                 bool reference)
{
    /* The first line, at or after each line, where a stretch without an
     * end must stop: a blank or comment-only line (`stop` holds them) or a
     * function's first. */
    for (const FunctionReport &f : module.functions)
        if (f.line >= 1 && f.line <= lineCount)
            stop[f.line] = 1;
    std::vector<uint32_t> nextStop(lineCount + 2, lineCount + 1);
    for (uint32_t l = lineCount; l >= 1; --l)
        nextStop[l] = stop[l] ? l : nextStop[l + 1];

    std::vector<const PositionReport *> feasible;
    for (const PositionReport &p : module.positions)
        if (!p.infeasible && p.line >= 1 && p.line <= lineCount && p.column >= 1)
            feasible.push_back(&p);
    std::vector<Stretch> stretches;
    for (size_t i = 0; i < feasible.size(); ++i) {
        const PositionReport &p = *feasible[i];
        Stretch s{{p.line, p.column}, {0, 0}, classOf(p, reference), &p};
        Point given{p.endLine, p.endColumn};
        if (p.endLine != 0 && s.start < given) {
            s.end = given;
        } else {
            Point next{lineCount + 1, 1};
            if (i + 1 < feasible.size())
                next = Point{feasible[i + 1]->line, feasible[i + 1]->column};
            Point stopAt{p.line + 1 <= lineCount ? nextStop[p.line + 1] : lineCount + 1, 1};
            s.end = next < stopAt ? next : stopAt;
        }
        stretches.push_back(s);
    }
    return stretches;
}

const char *const GLYPH[8] = {nullptr, "&#8856;", nullptr, "&#10003;", "&#9680;", "&#10007;", "&#402;", nullptr};
/* The glyphs as UTF-8, for the rows. */
const char *const GLYPH_TEXT[8] = {nullptr, "\u2298", nullptr, "\u2713", "\u25D0", "\u2717", "\u0192", nullptr};
const char *const GLYPH_NAME[8] = {nullptr, "excluded", nullptr, "covered", "partly covered", "uncovered block",
                                   "function never called", nullptr};

/* The line's glyph class from the classes of the positions starting on it. */
int lineStatus(const std::vector<int> &classes)
{
    if (classes.empty())
        return 0;
    bool all3 = true, all5 = true;
    for (int c : classes) {
        if (c == COLOR_UNCOVERED_FUNCTION)
            return COLOR_UNCOVERED_FUNCTION;
        all3 = all3 && c == COLOR_COVERED;
        all5 = all5 && c == COLOR_UNCOVERED_BLOCK;
    }
    return all3 ? COLOR_COVERED : all5 ? COLOR_UNCOVERED_BLOCK : COLOR_PARTIAL;
}

bool isInfeasibleLine(const ModuleReport &module, uint32_t line)
{
    auto it = std::upper_bound(module.infeasibleLines.begin(), module.infeasibleLines.end(),
                               std::make_pair(uint64_t(line), UINT64_MAX));
    if (it == module.infeasibleLines.begin())
        return false;
    --it;
    return it->first <= line && line <= it->second;
}

/* Copies `text` of compile-time length to `out`; where it ends. */
template <size_t N>
char *copied(char *out, const char (&text)[N])
{
    memcpy(out, text, N - 1);
    return out + N - 1;
}

void writeTitle(Html5Page &page, const PositionReport &p)
{
    char *out = copied(page.room(16 + 3 * PageWriter::MOST_DIGITS), " title=\"");
    out = copied(PageWriter::digitsInto(out, p.count), " (");
    out = PageWriter::digitsInto(out, p.executed);
    *out++ = '/';
    page.commit(copied(PageWriter::digitsInto(out, p.blocks), ")\""));
}

void writeFunctionTable(Html5Page &page, const ModuleReport &module, bool reference)
{
    page.raw("<section aria-labelledby=\"functions\"><h2 id=\"functions\">Functions</h2>\n"
             "<div class=\"table-wrap\"><table class=\"data sortable\"><thead><tr>"
             "<th scope=\"col\"><button type=\"button\">Function</button></th>"
             "<th scope=\"col\"><button type=\"button\">Line</button></th>"
             "<th scope=\"col\"><button type=\"button\">Blocks</button></th>"
             "<th scope=\"col\"><button type=\"button\">");
    page.text(reference ? "Missed" : "Covered");
    page.literal("</button></th><th scope=\"col\"><button type=\"button\">");
    page.text(reference ? "Miss %" : "Coverage %");
    page.literal("</button></th></tr></thead>\n<tbody>\n");
    for (const FunctionReport &f : module.functions) {
        double percent = roundHalfUp2(coveragePercent(f.covered, f.blocks));
        page.literal("<tr class=\"row\"><td><a href=\"#L");
        page.number(f.line);
        page.literal("\">");
        page.text(f.name != nullptr ? f.name : f.procName);
        page.literal("</a></td><td data-v=\"");
        page.number(f.line);
        page.literal("\">");
        page.number(f.line);
        page.literal("</td><td data-v=\"");
        page.number(f.blocks);
        page.literal("\">");
        page.number(f.blocks);
        page.literal("</td><td data-v=\"");
        page.number(f.covered);
        page.literal("\">");
        page.number(f.covered);
        page.literal("</td><td class=\"pct\" data-v=\"");
        page.percent(percent);
        page.literal("\">");
        page.percent(percent);
        page.literal("%</td></tr>\n");
    }
    page.literal("</tbody></table></div></section>\n");
}

void writeLegend(Html5Page &page, bool reference)
{
    page.literal("<ul class=\"legend\" aria-label=\"Legend\">");
    const int classes[] = {COLOR_COVERED, COLOR_PARTIAL, COLOR_UNCOVERED_BLOCK, COLOR_UNCOVERED_FUNCTION,
                           COLOR_INFEASIBLE};
    for (int c : classes) {
        page.literal("<li><span class=\"k");
        page.number(static_cast<uint64_t>(c));
        page.literal("\">");
        page.raw(GLYPH[c]);
        page.literal(" ");
        if (reference && c == COLOR_COVERED)
            page.literal("not newly covered");
        else if (reference && c == COLOR_UNCOVERED_BLOCK)
            page.literal("newly covered block");
        else if (reference && c == COLOR_UNCOVERED_FUNCTION)
            page.literal("newly covered function");
        else
            page.raw(GLYPH_NAME[c]);
        page.literal("</span></li>");
    }
    page.raw("</ul>\n<p class=\"keys\">Keys: <kbd>n</kbd> next and <kbd>p</kbd> previous uncovered line, "
             "<kbd>t</kbd> theme.</p>\n");
}

/* A row up to its text cell, in one reservation: the line's number three
 * times (anchor, link, text), the row's class, the glyph and the count.
 * Rows are the bulk of the view, so they are written in HTML's short form:
 * unquoted plain attributes, no optional end tags. */
void writeRowOpening(Html5Page &page, const LineDigits &number, const char *rowClass, int status, bool counted,
                     uint64_t hits)
{
    static const size_t MOST = 160;
    const size_t digits = number.length();
    char *out = copied(page.room(MOST), "<tr id=L");
    memcpy(out, number.first, LineDigits::END);
    out += digits;
    if (rowClass != nullptr) {
        memcpy(out, rowClass, 8);
        out += 8;
    }
    out = copied(out, "><td><a href=#L");
    memcpy(out, number.first, LineDigits::END);
    out += digits;
    *out++ = '>';
    memcpy(out, number.first, LineDigits::END);
    out = copied(out + digits, "</a><td>");
    if (status != 0) {
        size_t glyph = strlen(GLYPH_TEXT[status]);
        memcpy(out, GLYPH_TEXT[status], glyph);
        out += glyph;
    }
    out = copied(out, "<td>");
    if (counted)
        out = PageWriter::digitsInto(out, hits);
    page.commit(copied(out, "<td>"));
}

/* The source rows, painted. */
void writeSource(Html5Page &page, const ModuleReport &module, std::string_view bytes, bool reference)
{
    std::vector<SourceLine> lines = splitLines(bytes);
    uint32_t lineCount = static_cast<uint32_t>(lines.size());
    std::vector<Stretch> stretches =
        stretchesOf(module, codelessLines(bytes, lines, isFortran(module.path)), lineCount, reference);

    page.raw("<div class=\"code\" tabindex=\"0\" role=\"region\" aria-label=\"Listing\">"
             "<table class=\"src\"><tbody>\n");
    std::vector<size_t> active;             /* stretches in force, innermost last */
    size_t nextStretch = 0;
    struct Event {
        uint32_t column;
        int kind; /* 0: an end, 1: a start */
        size_t stretch;
    };
    std::vector<Event> events;
    std::vector<int> classes;
    LineDigits number;
    for (uint32_t line = 1; line <= lineCount; ++line) {
        const SourceLine &text = lines[line - 1];
        const char *chars = bytes.data() + text.start;
        uint32_t endColumn = static_cast<uint32_t>(text.length) + 1;

        events.clear();
        classes.clear();
        uint64_t hits = 0;
        bool uncovered = false;
        for (size_t s : active)
            if (stretches[s].end.line == line)
                events.push_back(Event{stretches[s].end.column, 0, s});
        for (; nextStretch < stretches.size() && stretches[nextStretch].start.line == line; ++nextStretch) {
            const Stretch &s = stretches[nextStretch];
            events.push_back(Event{s.start.column, 1, nextStretch});
            if (s.end.line == line)
                events.push_back(Event{s.end.column, 0, nextStretch});
            classes.push_back(s.colour);
            hits = std::max(hits, s.position->count);
            uncovered = uncovered || s.colour == COLOR_UNCOVERED_BLOCK || s.colour == COLOR_UNCOVERED_FUNCTION;
        }
        /* In column order, ends before starts, else as they came: a line
         * has a handful of events, so an insertion sort (which keeps the
         * order of equals) is the cheapest. */
        for (size_t i = 1; i < events.size(); ++i) {
            Event moving = events[i];
            size_t j = i;
            for (; j > 0 && (moving.column != events[j - 1].column ? moving.column < events[j - 1].column
                                                                    : moving.kind < events[j - 1].kind);
                 --j)
                events[j] = events[j - 1];
            events[j] = moving;
        }

        bool excluded = isInfeasibleLine(module, line);
        int status = excluded ? COLOR_INFEASIBLE : lineStatus(classes);
        number.next();
        writeRowOpening(page, number, excluded ? " class=x" : uncovered ? " class=u" : nullptr, status,
                        !classes.empty(), hits);

        uint32_t column = 1;
        auto emit = [&](uint32_t upTo, const PositionReport *titled) {
            uint32_t to = std::min(upTo, endColumn);
            if (to <= column)
                return;
            int colour = active.empty() || excluded ? 0 : stretches[active.back()].colour;
            /* A line's indentation is left unpainted. */
            if (column == 1 && titled == nullptr &&
                std::all_of(chars, chars + (to - 1), [](char c) { return c == ' ' || c == '\t'; }))
                colour = 0;
            if (colour != 0) {
                /* The class is one digit (the seven colour classes). */
                char *out = copied(page.room(16), "<span class=k");
                *out++ = static_cast<char>('0' + colour);
                if (titled != nullptr) {
                    page.commit(out);
                    writeTitle(page, *titled);
                    page.raw('>');
                } else {
                    *out++ = '>';
                    page.commit(out);
                }
            }
            page.content(chars + column - 1, to - column);
            if (colour != 0)
                page.literal("</span>");
            column = to;
        };
        const PositionReport *titled = nullptr;
        for (const Event &e : events) {
            emit(e.column, titled);
            if (e.column > column)
                column = std::min(e.column, endColumn);
            titled = nullptr;
            if (e.kind == 0) {
                auto it = std::find(active.rbegin(), active.rend(), e.stretch);
                if (it != active.rend())
                    active.erase(std::next(it).base());
            } else {
                active.push_back(e.stretch);
                titled = stretches[e.stretch].position;
            }
        }
        emit(endColumn, titled);
        page.raw('\n');
    }
    page.literal("</tbody></table></div>\n");
}

}  // namespace

Html5Labels html5Labels(bool reference)
{
    return reference ? Html5Labels{"missed", "miss"} : Html5Labels{"covered", "coverage"};
}

void writeHtml5Head(Html5Page &page, const std::string &title, const std::string &toRoot)
{
    page.raw("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
             "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>");
    page.text(title);
    page.literal("</title>\n<link rel=\"stylesheet\" href=\"");
    page.raw(toRoot);
    page.literal("style.css\">\n<script src=\"");
    page.raw(toRoot);
    page.literal("report.js\" defer></script>\n</head>\n");
}

void writeHtml5ThemeButton(Html5Page &page)
{
    page.literal("<button id=\"theme\" type=\"button\" hidden>Dark theme</button>\n");
}

void writeHtml5Totals(Html5Page &page, const Html5Labels &labels, const std::vector<Html5Total> &totals)
{
    page.literal("<ul class=\"totals\">");
    for (const Html5Total &t : totals) {
        double rounded = roundHalfUp2(t.percent);
        page.literal("<li>");
        page.raw(t.name);
        page.literal(" ");
        page.text(labels.covered);
        page.literal(": <strong>");
        page.number(t.covered);
        page.literal("</strong> of ");
        page.number(t.total);
        page.literal(" (");
        page.percent(rounded);
        page.literal("%) <meter min=\"0\" max=\"100\" value=\"");
        page.percent(rounded);
        page.literal("\" aria-label=\"");
        page.raw(t.name);
        page.literal(" ");
        page.text(labels.coverage);
        page.literal("\"></meter></li>");
    }
    page.literal("</ul>\n");
}

void writeHtml5FilePage(const Html5FilePage &input, Html5Page &page)
{
    const ModuleReport &module = *input.module;
    std::string title = input.shownPath + " - coverage";
    if (input.project != nullptr)
        title += std::string(" of ") + input.project;
    writeHtml5Head(page, title, input.toRoot);
    page.literal("<body>\n<header>\n<nav aria-label=\"Breadcrumb\"><a href=\"");
    page.raw(input.toRoot);
    page.literal("index.html\">All files</a> / ");
    page.text(input.shownPath);
    page.literal("</nav>\n<h1>");
    page.text(input.shownPath);
    page.literal("</h1>\n");
    writeHtml5ThemeButton(page);
    page.literal("</header>\n<main>\n");
    writeHtml5Totals(page, html5Labels(input.reference),
                     {{"Functions", module.functionsCovered, module.functionsTotal, module.functionPercent},
                      {"Blocks", module.blocksCovered, module.blocksTotal, module.blockPercent}});
    writeFunctionTable(page, module, input.reference);
    page.literal("<section aria-labelledby=\"source\"><h2 id=\"source\">Source</h2>\n");
    writeLegend(page, input.reference);
    if (input.source != nullptr)
        writeSource(page, module, *input.source, input.reference);
    else
        page.literal("<p>The source file could not be read.</p>\n");
    page.literal("</section>\n</main>\n</body>\n</html>\n");
}
