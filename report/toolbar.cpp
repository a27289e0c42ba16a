/* toolbar.cpp -- the toolbar page, and the writing of the report's fixed
 * files before the first source file is processed. */
#include "report/toolbar.h"

#include <string>

#include "driver/settings.h"
#include "report/help_page.h"
#include "report/html_escape.h"
#include "report/images.h"
#include "report/maker_credit.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char TOOLBAR_HEAD[] =
    "<html>\n"
    "<head>\n"
    "<base target=\"_parent\">\n"
    "</head>\n"
    "<body bgcolor=\"FFFFFF\">\n"
    "<table border=0 cellpadding=3 cellspacing=0>\n"
    "<tr>\n";

static const char TOOLBAR_FOOT[] =
    "</tr>\n"
    "</table>\n"
    "</body>\n"
    "</html>\n";

static const char ICON_BORDER[] = "border=\"0\"";

void writeToolBarPage(FILE *page, const char *ext)
{
    fputs(TOOLBAR_HEAD, page);

    /* The links leave the report directory and come back into it, so that
     * they hold from wherever the toolbar's frameset was loaded. */
    fputs("<td>\n", page);
    fprintf(page, "<a href=\"../%s\" title=\"Coverage Summary\"><img src=\"%s\" %s></a>\n",
            HtmlValue(getHTMLname(ROOT_PAGE, ext)).c_str(), HOME_IMAGE, ICON_BORDER);
    fputs("</td>\n", page);
    fputs("<td>\n", page);
    fprintf(page, "<a target=\"_new\" href=\"../%s\" title=\"Help\"><img src=\"%s\" %s></a>\n",
            HtmlValue(getDirHTMLname(HELP_PAGE, ext)).c_str(), HELP_IMAGE, ICON_BORDER);
    fputs("</td>\n", page);
    fprintf(page, "<td width=\"%d%%\" align=\"right\">\n", 100);
    writeMakerLogo(page);
    fputs("</td>\n", page);

    fputs(TOOLBAR_FOOT, page);
}

bool createToolBar(const char *ext)
{
    /* The toolbar page is created first and filled last. */
    const std::string toolbarName = getDirHTMLname(TOOLBAR_PAGE, ext);
    FILE *toolbar = openReportFile(toolbarName.c_str());
    if (toolbar == nullptr) {
        fprintf(stderr, "Unable to create ToolBar file!\n");
        return false;
    }
    if (!bWriteReportImages()) {
        checked_close_unfinished(toolbar);
        return false;
    }
    const std::string helpName = getDirHTMLname(HELP_PAGE, ext);
    FILE *help = openReportFile(helpName.c_str());
    if (help == nullptr) {
        fprintf(stderr, "Unable to create On-Line Help!\n");
        checked_close_unfinished(toolbar);
        return false;
    }
    writeHelpPage(help, Infeasible_markers_specified != 0);
    checked_close_rewritten(help, helpName.c_str());
    writeToolBarPage(toolbar, ext);
    checked_close_rewritten(toolbar, toolbarName.c_str());
    return true;
}
