/* html5_file_page.h -- one source file's page of the modern view: the
 * line-number gutter (each number a link), a status glyph and the highest
 * count per line, the source with each recorded position's stretch painted
 * in its colour class, and the file's function table.
 *
 * A stretch starts at its position. When the profile gives the block's end,
 * it ends there, and an inner stretch shows over the one around it;
 * otherwise it runs to the next position, but not onto a blank line, a line
 * holding only a comment, or the first line of another function.
 */
#ifndef VEMCOV_REPORT_HTML5_FILE_PAGE_H
#define VEMCOV_REPORT_HTML5_FILE_PAGE_H

#include <string>
#include <string_view>
#include <vector>

#include "analysis/module_report.h"
#include "report/html5_page.h"

struct Html5FilePage {
    const ModuleReport *module;
    std::string shownPath;   /* the path below the report's common root */
    std::string toRoot;      /* "../" repeated up to the view's root */
    const char *project;     /* -prj, or null */
    bool reference;          /* -ref: differential colours and labels */
    const std::string_view *source; /* the file's bytes, or null when unreadable */
};

void writeHtml5FilePage(const Html5FilePage &input, Html5Page &page);

/* The words of the columns: covered and coverage, or under -ref missed and
 * miss, as the documented report labels them. */
struct Html5Labels {
    const char *covered;
    const char *coverage;
};
Html5Labels html5Labels(bool reference);

/* One figure of a page's totals: covered of total, and the percentage. */
struct Html5Total {
    const char *name;
    uint64_t covered;
    uint64_t total;
    double percent;  /* unrounded */
};

/* Shared by both page kinds: the head up to <body>, the theme button, and
 * the totals as a list with a bar each. */
void writeHtml5Head(Html5Page &page, const std::string &title, const std::string &toRoot);
void writeHtml5ThemeButton(Html5Page &page);
void writeHtml5Totals(Html5Page &page, const Html5Labels &labels, const std::vector<Html5Total> &totals);

#endif
