/* comment_parser.cpp -- the marker-comment scanner and the disabled lines. */
#include "analysis/comment_parser.h"

#include <algorithm>
#include <exception>

#include "analysis/coverage_state.h"
#include "driver/console.h"
#include "shared/vemtra/tallyfold/checked_io.h"

namespace {

/* The parser's messages (standard error). "begining" is the program's own
 * spelling. */
const char MSG_UNEXPECTED[] = "Unexpected issue, please contact developers\n";
const char MSG_UNMATCHED_END[] =
    "WARNING: An ending marker in file %s, line %llu doesn't match any begining marker. Ignored\n";

const size_t READ_AHEAD = 65536;

/* Scanner states. */
enum ScanState { IN_CODE = 0, IN_CHAR = 1, IN_STRING = 2, IN_LINE_COMMENT = 3, IN_BLOCK_COMMENT = 4 };

bool isComment(int state)
{
    return state == IN_LINE_COMMENT || state == IN_BLOCK_COMMENT;
}

bool listHolds(const std::vector<std::string> &list, const std::string &text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

/* Moves `cursor` along the line chain to the first function whose line is
 * not below `line` and answers is_func_bound's question there. */
bool funcBoundFrom(const COMP *&cursor, unsigned long line, unsigned long *end)
{
    while (cursor != nullptr && static_cast<int64_t>(cursor->line) < static_cast<int64_t>(line))
        cursor = cursor->next_by_line;
    if (cursor == nullptr || static_cast<int64_t>(cursor->line) != static_cast<int64_t>(line))
        return false;
    if (end != nullptr) {
        const COMP *next = cursor->next_by_line;
        if (next == nullptr)
            *end = 0;
        else if (next->line == cursor->line)
            *end = static_cast<unsigned long>(next->line);
        else
            *end = static_cast<unsigned long>(next->line) - 1;
    }
    return true;
}

}  // namespace

bool comment_t::position_criteria(const comment_t &first, const comment_t &second)
{
    return first.start_line < second.start_line;
}

bool comment_t::is_simple_comment(const comment_t &comment)
{
    return comment.kind == COMMENT_ONE_LINE;
}

bool is_func_bound(unsigned long line, unsigned long *end)
{
    const COMP *cursor = first_func_line;
    return funcBoundFrom(cursor, line, end);
}

parser::parser(const char *name, std::vector<std::string> &oneLine, std::vector<std::string> &beginBlock,
               std::vector<std::string> &endBlock)
    : oneLineMarks(oneLine), beginMarks(beginBlock), endMarks(endBlock)
{
    try {
        fileName = name != nullptr ? name : "";
        if (oneLineMarks.empty() && (beginMarks.empty() || endMarks.empty()))
            return;
        input = VEMTRA_Open_Regular_File(fileName.c_str());
        if (input == nullptr)
            return;  /* no infeasible lines; the cause is "Can't open" */
        active = 1;
        buffer.resize(READ_AHEAD);
        funcCursor = first_func_line;
        parse_for_cpp_comments();
        fclose(input);
        input = nullptr;
        buffer = std::vector<unsigned char>();
        process_comments();
    } catch (const std::exception &) {
        fputs(MSG_UNEXPECTED, stderr);
        tvx_Exit(1);
    }
}

parser::~parser()
{
    if (input != nullptr)
        fclose(input);
}

/* The slow path of next_char: the buffer is used up. */
int parser::refill_and_next()
{
    if (input == nullptr)
        return EOF;
    bufferLen = fread(buffer.data(), 1, buffer.size(), input);
    bufferPos = 0;
    if (bufferLen == 0)
        return EOF;
    return buffer[bufferPos++];
}

bool parser::is_simple_mark(const std::string &text) const
{
    return listHolds(oneLineMarks, text);
}

bool parser::is_begin_mark(const std::string &text) const
{
    return listHolds(beginMarks, text);
}

bool parser::is_end_mark(const std::string &text) const
{
    return listHolds(endMarks, text);
}

void parser::strip_comment(std::string &text)
{
    static const char TRIMMED[] = " /*\t\n";
    size_t first = text.find_first_not_of(TRIMMED);
    if (first == std::string::npos) {
        text.clear();
        return;
    }
    size_t last = text.find_last_not_of(TRIMMED);
    text = text.substr(first, last - first + 1);
}

/* A state machine over pairs (previous, current) of characters. The line
 * counter moves on after a pair whose previous character is a newline, so
 * during a pair it holds the previous character's line. */
void parser::parse_for_cpp_comments()
{
    int state = IN_CODE;
    comment_t working{std::string(), 0, 0, COMMENT_NONE};

    int previous = next_char();
    int current;
    while (previous != EOF && previous != 0 && (current = next_char()) != EOF && current != 0) {
        int before = state;
        /* An escaped quote inside a literal does not end it. */
        bool consumed = previous == '\\' && (state == IN_CHAR || state == IN_STRING) &&
                        (current == '"' || current == '\'');
        if (!consumed) {
            if (previous == '\n' && state == IN_LINE_COMMENT) {
                working.end_line = line;
                state = IN_CODE;
                registry_comment(working);
            }
            if (previous == '/' && current == '/' && state == IN_CODE) {
                working.start_line = line;
                state = IN_LINE_COMMENT;
            } else if (previous == '*' && current == '/' && state == IN_BLOCK_COMMENT) {
                /* The text holds the opening '*': a comment of fewer than two
                 * body characters does not close here and runs on. */
                if (working.text.size() > 2) {
                    working.end_line = line;
                    state = IN_CODE;
                    registry_comment(working);
                }
            } else if (previous == '/' && current == '*' && state == IN_CODE) {
                working.start_line = line;
                state = IN_BLOCK_COMMENT;
            } else if (current == '\'' && (state == IN_CODE || state == IN_CHAR)) {
                state = state == IN_CODE ? IN_CHAR : IN_CODE;
            } else if (current == '"' && (state == IN_CODE || state == IN_STRING)) {
                state = state == IN_CODE ? IN_STRING : IN_CODE;
            }
        }
        if (isComment(before) && isComment(state))
            working.text += static_cast<char>(previous);
        if (previous == '\n')
            ++line;
        previous = current;
    }
    lineTotal = line;
}

uint32_t parser::registry_comment(comment_t &comment)
{
    strip_comment(comment.text);
    if (is_simple_mark(comment.text))
        comment.kind = COMMENT_ONE_LINE;
    else if (is_begin_mark(comment.text))
        comment.kind = COMMENT_BEGIN;
    else if (is_end_mark(comment.text))
        comment.kind = COMMENT_END;
    uint32_t kind = comment.kind;
    uint64_t endLine = comment.end_line;
    if (kind != COMMENT_NONE)
        comments.push_back(comment);
    comment.text.clear();
    comment.start_line = 0;
    comment.end_line = 0;
    comment.kind = COMMENT_NONE;
    if (kind == COMMENT_ONE_LINE)
        proceed_last_single_line_mark_as_function_block(endLine);
    return kind;
}

/* A one-line marker on a function's first line becomes a begin marker, and
 * the function's last line (the line before the next function) gets a
 * made-up end marker. On the module's last function the begin marker stays
 * open and disables the rest of the file. */
void parser::proceed_last_single_line_mark_as_function_block(uint64_t markLine)
{
    auto last = std::find_if(comments.rbegin(), comments.rend(), comment_t::is_simple_comment);
    if (last == comments.rend())
        return;
    /* Markers arrive in file order, so the chain walk resumes where it
     * stopped; an earlier line starts it over. */
    if (markLine < funcCursorLine)
        funcCursor = first_func_line;
    funcCursorLine = markLine;
    unsigned long end = 0;
    if (!funcBoundFrom(funcCursor, static_cast<unsigned long>(markLine), &end))
        return;
    last->kind = COMMENT_BEGIN;
    if (end != 0)
        comments.push_back(comment_t{std::string(), end, end, COMMENT_END});
}

/* Prints a warning about line `at` and keeps its text for replay_warnings. */
void parser::warn(const char *format, uint64_t at)
{
    int length = snprintf(nullptr, 0, format, fileName.c_str(), (unsigned long long)at);
    std::string text(static_cast<size_t>(length) + 1, '\0');
    snprintf(&text[0], text.size(), format, fileName.c_str(), (unsigned long long)at);
    text.pop_back();
    fputs(text.c_str(), stderr);
    warnings += text;
}

void parser::replay_warnings() const
{
    fputs(warnings.c_str(), stderr);
}

void parser::disable_lines(uint64_t first, uint64_t last)
{
    disabled.emplace_back(first, last);
}

void parser::process_comments()
{
    std::stable_sort(comments.begin(), comments.end(), comment_t::position_criteria);

    std::vector<uint64_t> begins;
    for (const comment_t &comment : comments) {
        switch (comment.kind) {
        case COMMENT_ONE_LINE:
            disable_lines(comment.start_line, comment.start_line);
            break;
        case COMMENT_BEGIN:
            begins.push_back(comment.start_line);
            break;
        case COMMENT_END:
            if (begins.empty()) {
                warn(MSG_UNMATCHED_END, comment.start_line);
                break;
            }
            if (begins.back() <= comment.start_line)
                disable_lines(begins.back(), comment.start_line);
            begins.pop_back();
            break;
        default:
            break;
        }
    }
    for (auto b = begins.rbegin(); b != begins.rend(); ++b)
        if (*b <= lineTotal)
            disable_lines(*b, lineTotal);

    /* Merge the ranges so that a query is one binary search. */
    std::sort(disabled.begin(), disabled.end());
    size_t kept = 0;
    for (size_t i = 0; i < disabled.size(); ++i) {
        if (kept > 0 && disabled[i].first <= disabled[kept - 1].second + 1)
            disabled[kept - 1].second = std::max(disabled[kept - 1].second, disabled[i].second);
        else
            disabled[kept++] = disabled[i];
    }
    disabled.resize(kept);
}

bool parser::is_disabled_line(unsigned long query) const
{
    auto after = std::upper_bound(disabled.begin(), disabled.end(), query,
                                  [](unsigned long l, const std::pair<uint64_t, uint64_t> &range) {
                                      return l < range.first;
                                  });
    if (after == disabled.begin())
        return false;
    --after;
    return query >= after->first && query <= after->second;
}

bool parser::is_enabled_line(unsigned long query) const
{
    return !is_disabled_line(query);
}
