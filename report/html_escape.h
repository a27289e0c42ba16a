/* html_escape.h -- the escapers of the report's pages, one per context.
 *
 * Paths, function names, the project, the owner, the colours and the
 * test-database settings come from profiles and options, and reports are
 * published on web hosts: none of them may open a tag or leave an
 * attribute. Page text and double-quoted attributes share one escaper:
 * "<", ">", '"' and "'" become "&lt;", "&gt;", "&quot;" and "&#39;"; "&"
 * stays, so that names such as "f(const T&)" keep their bytes. Values in a
 * URL's query are percent-encoded instead. (The listing's source text has
 * its own escaping, in source_listing.cpp.)
 */
#ifndef VEMCOV_REPORT_HTML_ESCAPE_H
#define VEMCOV_REPORT_HTML_ESCAPE_H

#include <cstdio>
#include <string>

#include "report/page_writer.h"

/* A value as page text or inside a double-quoted attribute. c_str() is the
 * value itself when nothing in it needs escaping, so the common case copies
 * nothing; a null value reads as "". Meant as a temporary argument:
 *     fprintf(page, "<a title=\"%s\">", HtmlValue(path).c_str());       */
class HtmlValue {
public:
    explicit HtmlValue(const char *text);
    const char *c_str() const { return text_; }

private:
    std::string escaped_;
    const char *text_;
};

/* The entity of a character that page text and attributes must not carry
 * as it is, or null. */
const char *htmlEntity(char c);

/* Writes `text` as an HtmlValue would read. */
void writeHtmlValue(FILE *page, const char *text);

/* The same escapes, for a page built in a PageWriter. */
extern const EscapeSet HTML_VALUE_ESCAPES;
void putHtmlValue(PageWriter &page, const char *text);

/* Writes `text` percent-encoded for a value in a URL's query: letters,
 * digits and "-._~:@/?!$()*,;" as they are, every other byte as "%XX"
 * (upper-case hexadecimal), so "operator&&" is "operator%26%26". A null
 * text writes nothing. */
void writeUrlQueryValue(FILE *page, const char *text);

#endif
