/* comment_parser.h -- finds the infeasible-code markers in the C and C++
 * comments of one source file and answers which lines they disable.
 *
 * Three lists of marker texts are configured: one-line markers (disable the
 * line of the comment, or a whole function when the comment stands on the
 * function's first line), begin markers and end markers (disable the lines
 * from a begin marker through the matching end marker; an unmatched begin
 * marker disables the rest of the file). A comment is a marker when its
 * text, trimmed of blanks, tabs, newlines, '/' and '*', equals a marker.
 */
#ifndef VEMCOV_ANALYSIS_COMMENT_PARSER_H
#define VEMCOV_ANALYSIS_COMMENT_PARSER_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "analysis/coverage_records.h"

/* Kinds of a comment. */
const uint32_t COMMENT_ONE_LINE = 0;  /* a one-line marker */
const uint32_t COMMENT_BEGIN = 1;     /* a begin marker */
const uint32_t COMMENT_END = 2;       /* an end marker */
const uint32_t COMMENT_NONE = 4;      /* not a marker (the working value) */

/* One recognised marker comment. */
struct comment_t {
    std::string text;     /* trimmed text (empty for a made-up end marker) */
    uint64_t start_line;  /* line where the comment begins */
    uint64_t end_line;    /* line where it ends */
    uint32_t kind;        /* COMMENT_* */

    /* The order of comments: by start line. */
    static bool position_criteria(const comment_t &first, const comment_t &second);
    /* True for a one-line marker. */
    static bool is_simple_comment(const comment_t &comment);
};

class parser {
public:
    /* Scans `fileName` for marker comments and builds the disabled lines.
     * The three lists are kept by reference and must outlive the parser. A
     * parser with no one-line markers and no complete begin/end pair, or
     * whose file cannot be opened, reads nothing and disables nothing. Runs
     * whose scan fails otherwise end with status 1 after "Unexpected issue,
     * please contact developers". Reads the current module's line chain
     * (first_func_line) to extend markers on a function's first line. */
    parser(const char *fileName, std::vector<std::string> &oneLine, std::vector<std::string> &beginBlock,
           std::vector<std::string> &endBlock);
    ~parser();
    parser(const parser &) = delete;
    parser &operator=(const parser &) = delete;

    /* Whether `line` is infeasible. */
    bool is_disabled_line(unsigned long line) const;
    /* The negation of is_disabled_line. */
    bool is_enabled_line(unsigned long line) const;

    /* Whether `text` equals (whole, case-sensitive) an entry of the list. */
    bool is_simple_mark(const std::string &text) const;
    bool is_begin_mark(const std::string &text) const;
    bool is_end_mark(const std::string &text) const;

    /* Trims blanks, '/', '*', tabs and newlines from both ends of `text`. */
    static void strip_comment(std::string &text);

    /* The next byte of the file, or EOF. */
    int next_char()
    {
        return bufferPos < bufferLen ? buffer[bufferPos++] : refill_and_next();
    }

    /* Prints once more, to standard error, the warnings the scan printed:
     * what a new parser of the same file and line chain would print. */
    void replay_warnings() const;

    /* The disabled lines as sorted, non-overlapping ranges [first, last]. */
    const std::vector<std::pair<uint64_t, uint64_t>> &disabled_ranges() const { return disabled; }

    /* Whether the file was read. */
    bool is_active() const { return active != 0; }
    /* The number of lines the scan counted (0 when the file was not read). */
    uint64_t line_total() const { return lineTotal; }

private:
    int refill_and_next();
    void parse_for_cpp_comments();
    uint32_t registry_comment(comment_t &comment);
    void proceed_last_single_line_mark_as_function_block(uint64_t line);
    void process_comments();
    void disable_lines(uint64_t first, uint64_t last);
    void warn(const char *format, uint64_t at);

    FILE *input = nullptr;                 /* the source file while it is scanned */
    std::vector<unsigned char> buffer;     /* read-ahead over the file */
    size_t bufferPos = 0, bufferLen = 0;
    uint64_t line = 1;                     /* the line counter */
    /* The disabled lines, as sorted, non-overlapping and non-adjacent
     * ranges [first, last]: nested or repeated markers cost nothing extra. */
    std::vector<std::pair<uint64_t, uint64_t>> disabled;
    std::vector<std::string> &oneLineMarks;
    std::vector<std::string> &beginMarks;
    std::vector<std::string> &endMarks;
    std::vector<comment_t> comments;       /* the marker comments */
    uint8_t active = 0;
    std::string fileName;                  /* for messages */
    uint64_t lineTotal = 0;                /* the line counter at the end of the scan */
    std::string warnings;                  /* what the scan printed to standard error */
    const COMP *funcCursor = nullptr;      /* where the function-start search resumes */
    uint64_t funcCursorLine = 0;           /* the line it was last asked for */
};

/* Whether a function of the current module (the chain from first_func_line)
 * begins on `line`. If so, stores into `end` (when not null) the line before
 * the next function of the chain (that function's own line when it begins
 * on the same line), or 0 for the last function. */
bool is_func_bound(unsigned long line, unsigned long *end);

#endif
