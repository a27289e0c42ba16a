/* summary.cpp -- the summary page and the root frameset. */
#include "report/summary.h"

#include <string>

#include "analysis/coverage_state.h"
#include "analysis/percent_format.h"
#include "driver/number_format.h"
#include "driver/settings.h"
#include "report/html_escape.h"
#include "report/maker_credit.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "report/table_markup.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char SUMMARY_HEAD[] =
    "<html>\n"
    "<head>\n"
    "<title>Coverage Summary</title>\n"
    "</head>\n"
    "<body bgcolor=\"FFFFFF\">\n";

static const char BANNER_TABLE_START[] =
    "<table border=0 cellpadding=3 cellspacing=0 "
    "style=\"color:black;font-weight:normal;font-family:Verdana,Arial;"
    "font-size:xx-small\">\n";

static const char SUMMARY_HEADING_START[] =
    "<h3 ALIGN=\"center\" STYLE=\"font-family:Arial,Helvetica;color:#3366ff\">";

static const char NO_FRAMES[] = "<noframes> Your browser doesn't have frames support</noframes>\n";
static const char NO_INNER_FRAMES[] =
    "<noframes> Your browser does not have frames support</noframes>\n";

/* The root frameset's column split when both tables are shown. */
static const int COLUMNS_WITH_REFERENCE = 50;
static const int COLUMNS_PLAIN = 63;

/* The banner: the maker's credit on the left, the heading on the right. */
static void writeSummaryBanner(FILE *page, const char *project)
{
    fputs(BANNER_TABLE_START, page);
    fprintf(page, "<td width=\"%d%%\">\n", 30);
    fputs("<table border=0 cellpadding=0 cellspacing=0>\n", page);
    fputs("<tr><td>\n", page);
    writeMakerLogo(page);
    fputs("</td></tr>\n", page);
    fputs("<tr><td style=\"font-family:Verdana,Arial;font-size:xx-small\">\n", page);
    writeGeneratedBy(page);
    fputs("</td></tr>\n", page);
    fputs("</table>\n", page);
    fputs("</td>\n", page);
    fputs("<td>\n", page);
    fputs(SUMMARY_HEADING_START, page);
    if (project != nullptr)
        fprintf(page, "Coverage Summary of %s</h3>\n", HtmlValue(project).c_str());
    else
        fputs("Coverage Summary</h3>\n", page);
    fputs("</td>\n", page);
    fputs("</table>\n", page);
}

/* Total, covered, uncovered and percentage of one kind of item. */
static void writeTotalsCells(FILE *page, uint64_t total, uint64_t covered)
{
    char number[32];
    u64_to_ascii(number, total);
    fprintf(page, "<TD ALIGN=\"center\">%s</TD>\n", number);
    u64_to_ascii(number, covered);
    fprintf(page, "<TD ALIGN=\"center\">%s</TD>\n", number);
    u64_to_ascii(number, total - covered);
    fprintf(page, "<TD ALIGN=\"center\">%s</TD>\n", number);
    fprintf(page, "<TD ALIGN=\"center\" STYLE=\"font-weight:bold\">%6.2f</TD>\n",
            roundHalfUp2(coveragePercent(covered, total)));
}

void writeSummaryPage(FILE *page, const char *project, const SummaryTotals &totals, bool reference)
{
    fputs(SUMMARY_HEAD, page);
    writeSummaryBanner(page, project);

    writeFramedTableStart(page);
    static const char *const kinds[] = {"Files", "Functions", "Blocks"};
    for (const char *kind : kinds)
        fprintf(page, "<TH ALIGN=\"center\" COLSPAN=\"4\">%s</TH>\n", kind);
    fputs("</TR>\n", page);
    fputs(HEADER_ROW_START, page);
    const CoverageLabels labels = coverageLabels(reference);
    for (int i = 0; i < 3; ++i) {
        fputs("<TH ALIGN=\"center\">total</TH>\n", page);
        fprintf(page, "<TH ALIGN=\"center\">%s</TH>\n", labels.covered);
        fprintf(page, "<TH ALIGN=\"center\">%s</TH>\n", labels.uncovered);
        fprintf(page, "<TH ALIGN=\"center\">%s%%</TH>\n", labels.coverage);
    }
    fputs(TABLE_HEAD_END, page);

    fputs(DATA_ROW_START, page);
    writeTotalsCells(page, totals.files, totals.coveredFiles);
    writeTotalsCells(page, totals.functions, totals.coveredFunctions);
    writeTotalsCells(page, totals.blocks, totals.coveredBlocks);
    fputs("</TR>\n", page);
    fputs(FRAMED_TABLE_END, page);
    fputs("</body>\n", page);
    fputs("</html>\n", page);
    fputs("\n", page);
}

void writeRootFrameset(FILE *page, const char *project, const char *summaryName,
                       const char *coveredName, const char *uncoveredName, const char *ext,
                       bool reference)
{
    fputs("<html>\n", page);
    fputs("<head>\n", page);
    writeReportTitle(page, project);
    fputs("</head>\n", page);
    const bool anyTable = coveredName != nullptr || uncoveredName != nullptr;
    fprintf(page, "<frameset rows=\"%d%%, *\">\n", anyTable ? 30 : 100);
    fprintf(page, "<frame src=\"%s\" scrolling=\"yes\">\n", HtmlValue(getDirSlashHTMLname(summaryName, ext)).c_str());

    /* The uncovered table gets a column frameset of its own, beside the
     * covered table when there is one. */
    if (uncoveredName != nullptr) {
        int width = 100;
        if (coveredName != nullptr)
            width = reference ? COLUMNS_WITH_REFERENCE : COLUMNS_PLAIN;
        fprintf(page, "<frameset cols=\"%d%%, *\">\n", width);
    }
    if (coveredName != nullptr)
        fprintf(page, "<frame src=\"%s\" scrolling=\"yes\">\n",
                HtmlValue(getDirSlashVerHTMLname(coveredName, 4, ext)).c_str());
    if (uncoveredName != nullptr) {
        fprintf(page, "<frame src=\"%s\" scrolling=\"yes\">\n",
                HtmlValue(getDirSlashVerHTMLname(uncoveredName, 4, ext)).c_str());
        fputs(NO_INNER_FRAMES, page);
        fputs("</frameset>\n", page);
    }
    fputs(NO_FRAMES, page);
    fputs("</frameset>\n", page);
    fputs("</html>\n", page);
}

bool bCreateSummary(const char *project, const char *rootName, const char *summaryName,
                    const char *coveredName, const char *uncoveredName, const char *ext)
{
    const bool reference = compWithRef != 0;
    std::string name = getDirHTMLname(summaryName, ext);
    FILE *page = openReportFile(name.c_str());
    if (page == nullptr) {
        fprintf(stderr, "Unable to create root html file %s!\n", summaryName);
        return false;
    }
    SummaryTotals totals = {totalNumberOfFiles,  totalNumberOfFilesCovered,
                            totalNumberOfProcs,  totalNumberOfProcsCovered,
                            totalNumberOfBlocks, totalNumberOfBlocksCovered};
    writeSummaryPage(page, project, totals, reference);
    checked_close_rewritten(page, name.c_str());

    name = getHTMLname(rootName, ext);
    page = openReportFile(name.c_str());
    if (page == nullptr) {
        fprintf(stderr, "Unable to create root html file %s!\n", rootName);
        return false;
    }
    writeRootFrameset(page, project, summaryName, coveredName, uncoveredName, ext, reference);
    checked_close_rewritten(page, name.c_str());
    return true;
}
