/* file_frameset.cpp -- the per-file frameset. */
#include "report/file_frameset.h"

#include <string>

#include "report/function_pages.h"
#include "report/html_escape.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "report/table_markup.h"
#include "shared/vemtra/tallyfold/checked_io.h"

const char LISTING_FRAME_NAME[] = "src_view";

static const char PAGE_START[] =
    "<html>\n"
    "<head>\n";
static const char HEAD_END[] =
    "</head>\n"
    "<frameset cols=\"25%, *\">\n";
static const char ROWS_TOOLBAR_ONLY[] = "<frameset rows=\"100%, *\">\n";
static const char ROWS_ONE_LIST[] = "<frameset rows=\"10%, *\">\n";
static const char ROWS_TWO_LISTS[] = "<frameset rows=\"10%, 40%, *\">\n";
static const char TOOLBAR_FRAME[] = "<frame src=\"%s\" scrolling=\"no\">\n";
static const char LIST_FRAME[] = "<frame src=\"%s\" scrolling=\"yes\">\n";
/* The two noframes texts differ, and are kept so. */
static const char LEFT_COLUMN_END[] =
    "<noframes> Your browser does not have frames support</noframes>\n"
    "</frameset>\n";
static const char LISTING_FRAME[] = "<frame name=\"%s\" src=\"%s\" scrolling=\"yes\">\n";
static const char PAGE_END[] =
    "<noframes> Your browser doesn't have frames support</noframes>\n"
    "</frameset>\n"
    "</html>\n";

/* Sort order + 3 of the lists the frameset shows: order 1, by name. */
static const int FIRST_LIST_NUMBER = 4;

static void writeListFrame(FILE *page, const char *path, bool covered, const char *ext)
{
    fprintf(page, LIST_FRAME,
            HtmlValue(getHTMLname(functionListBase(path, covered, FIRST_LIST_NUMBER).c_str(), ext)).c_str());
}

void writeFileFrameset(FILE *page, const char *path, const char *ext, bool hasCovered, bool hasUncovered)
{
    fputs(PAGE_START, page);
    writeReportTitle(page, path);
    fputs(HEAD_END, page);

    if (!hasCovered && !hasUncovered)
        fputs(ROWS_TOOLBAR_ONLY, page);
    else if (hasCovered && hasUncovered)
        fputs(ROWS_TWO_LISTS, page);
    else
        fputs(ROWS_ONE_LIST, page);
    fprintf(page, TOOLBAR_FRAME, HtmlValue(getHTMLname(TOOLBAR_PAGE, ext)).c_str());
    if (hasUncovered)
        writeListFrame(page, path, false, ext);
    if (hasCovered)
        writeListFrame(page, path, true, ext);
    fputs(LEFT_COLUMN_END, page);

    fprintf(page, LISTING_FRAME, LISTING_FRAME_NAME, HtmlValue(getSrcHTMLname(path, ext)).c_str());
    fputs(PAGE_END, page);
}

bool bCreateFileFrameset(const char *path, const char *ext, bool hasCovered, bool hasUncovered)
{
    const std::string name = getDirHTMLname(path, ext);
    FILE *page = openPageFile(name.c_str(), {"Unable to create root html file %s!\n", path});
    if (page == nullptr)
        return false;
    writeFileFrameset(page, path, ext, hasCovered, hasUncovered);
    checked_close_rewritten(page, name.c_str());
    return true;
}
