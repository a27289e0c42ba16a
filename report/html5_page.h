/* html5_page.h -- one file of the modern view, written through the report's
 * page writer: raw markup, text escaped for its context, and the numbers
 * made by hand. */
#ifndef VEMCOV_REPORT_HTML5_PAGE_H
#define VEMCOV_REPORT_HTML5_PAGE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "report/page_writer.h"

class Html5Page {
public:
    /* Creates `path`, or writes over the file there (cut to its new length
     * at the close); a file that cannot be opened ends the run with
     * "ERROR: cannot write %s: %s" and status 1. */
    explicit Html5Page(const std::string &path);
    /* Writes what is left and closes the file; a failed write ends the run
     * with the same message. */
    ~Html5Page();
    Html5Page(const Html5Page &) = delete;
    Html5Page &operator=(const Html5Page &) = delete;

    void raw(const char *markup) { out_.put(markup); }
    void raw(const std::string &markup) { out_.put(markup); }
    void raw(char c) { out_.put(c); }
    /* Markup whose length is known when compiling. */
    template <size_t N>
    void literal(const char (&markup)[N])
    {
        out_.putLiteral(markup);
    }

    /* Text or a double-quoted attribute value: & < > " ' as entities. */
    void text(const char *value, size_t length);
    void text(const char *value);
    void text(const std::string &value) { text(value.data(), value.size()); }
    /* Element content only (source text): & < > as entities, quotes kept. */
    void content(const char *value, size_t length) { out_.putEscaped(value, length, CONTENT_ESCAPES); }

    void number(uint64_t value) { out_.putUnsigned(value); }
    /* Room for `length` bytes of markup written in place (at most the page
     * writer's ROOM_MOST), then where they end. */
    char *room(size_t length) { return out_.room(length); }
    void commit(const char *end) { out_.commit(end); }
    /* A percentage already rounded to two decimals, as "83.33". */
    void percent(double rounded) { out_.putPercent(rounded, 0); }

private:
    static const EscapeSet CONTENT_ESCAPES;
    std::string path_;
    FILE *file_;
    PageWriter out_;
};

#endif
