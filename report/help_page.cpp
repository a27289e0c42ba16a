/* help_page.cpp -- the on-line help, with the colours of the run. */
#include "report/help_page.h"

#include "report/colors.h"
#include "report/maker_credit.h"

static const char HELP_HEAD[] =
    "<html>\n"
    "<head>\n"
    "<title>Tarsk&#174; Compilers code-coverage tool on-line help</title>\n"
    "<base target=\"_self\">\n"
    "</head>\n"
    "<body bgcolor=\"FFFFFF\" style=\"font-family:Verdana,Arial;font-size:x-small\">\n";

static const char HELP_INTRODUCTION[] =
    "<h4 ALIGN=\"left\" style=\"color:#3366ff\">Welcome to Tarsk&#174; Compilers code-coverage tool.</h4>\n"
    "<p>From the profile information gathered by running the instrumented "
    "binaries of an application on its tests, the code-coverage tool creates "
    "HTML files that show which portions of the application's source code "
    "were, or were not, exercised by the tests. Applied to the profile of "
    "performance work-loads, it shows how well the training workload covers "
    "the critical code of the application.</p>\n";

static const char HELP_COLORS_START[] =
    "<h5 ALIGN=\"left\" style=\"color:#3366ff\">Coloring Scheme</h5>\n"
    "<p>The colors of the source views can be customized to any valid HTML "
    "color. The run you are browsing was configured with the following "
    "settings:</p>\n"
    "<TABLE BORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"0\">\n"
    "<TR>\n"
    "<TD BGCOLOR=\"#FF9900\">\n"
    "<TABLE BORDER=\"0\" CELLSPACING=\"1\" CELLPADDING=\"4\" "
    "STYLE=\"font-family:Verdana,Arial;font-size:x-small\">\n"
    "<TR BGCOLOR=\"#F0F0F0\">\n"
    "<TH ALIGN=\"center\">Color</TH>\n"
    "<TH ALIGN=\"left\">Meaning</TH>\n"
    "</TR>\n";

static const char HELP_COLORS_END[] =
    "</TABLE>\n"
    "</TD>\n"
    "</TR>\n"
    "</TABLE>\n";

static const char HELP_COUNTERS[] =
    "<h5 ALIGN=\"left\" style=\"color:#3366ff\">Dynamic Counters</h5>\n"
    "<p>When dynamic counts are generated, the execution counts appear in "
    "lines under the source code, after a <B>^</B> sign that stands exactly "
    "under the position where a basic block begins. When several blocks "
    "begin at one position (with macros, for example), the number of blocks "
    "and the number of executed blocks are shown as well. For example, "
    "^ 1000 (8/10) means that ten blocks "
    "were generated for this position, however, only eight of them were "
    "executed with a total execution count of 1000.</p>\n";

static const char HELP_SUMMARY[] =
    "<h5 ALIGN=\"left\" style=\"color:#3366ff\">Coverage Summary</h5>\n"
    "<p>The top-level summary reports the overall coverage of the selected "
    "modules and lists the modules with their totals and covered portions. "
    "Click on a column title to sort the list in ascending or descending "
    "order by block coverage, by function coverage or by name.</p>\n"
    "<p>Within the source view of each module, the uncovered and the covered "
    "functions are listed in two frames. The uncovered functions can be "
    "sorted by their number of blocks, the covered functions by their block "
    "coverage, and both lists by function name.</p>\n";

static const char HELP_FOOT[] =
    "</body>\n"
    "</html>\n";

/* One row of the colour table: a cell painted in the colour of the class,
 * its name, and what it means. */
static void writeColorRow(FILE *page, int color, const char *name, const char *meaning)
{
    fputs("<TR BGCOLOR=\"#FFFFFF\">\n", page);
    fprintf(page, "<TD STYLE=\"background-color: %s\">&#160;&#160;&#160;&#160;&#160;&#160;</TD>\n",
            takeBGColor(color));
    fprintf(page, "<TD><B>%s</B>%s</TD>\n", name, meaning);
    fputs("</TR>\n", page);
}

void writeHelpPage(FILE *page, bool showInfeasible)
{
    fputs(HELP_HEAD, page);
    writeMakerLogo(page);
    fputs(HELP_INTRODUCTION, page);

    fputs(HELP_COLORS_START, page);
    writeColorRow(page, COLOR_COVERED, "Covered code",
                  " The portion of code colored in this color was "
                  "exercised by the tests.");
    writeColorRow(page, COLOR_UNCOVERED_BLOCK, "Uncovered basic block",
                  " The portion of code colored in this color was not exercised "
                  "by any test, although it lies within a function that was executed.");
    writeColorRow(page, COLOR_UNCOVERED_FUNCTION, "Uncovered function",
                  " The functions colored in this color were never called "
                  "during the tests.");
    writeColorRow(page, COLOR_PARTIAL, "Partially-covered code",
                  " More than one basic block was generated for the source "
                  "position colored in this color; some of them were covered "
                  "and some were not.");
    if (showInfeasible) {
        writeColorRow(page, COLOR_INFEASIBLE, "Infeasible code",
                      " The portion of code colored in this color was marked as "
                      "infeasible and is ignored in the coverage analysis.");
    }
    writeColorRow(page, COLOR_UNKNOWN, "Unknown",
                  " No code was generated for the position colored in this "
                  "color; usually it is a comment, a header-file inclusion or a "
                  "variable declaration.");
    fputs(HELP_COLORS_END, page);

    fputs(HELP_COUNTERS, page);
    fputs(HELP_SUMMARY, page);
    fputs(HELP_FOOT, page);
}
