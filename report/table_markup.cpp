/* table_markup.cpp -- fragments of the summary page and the file tables. */
#include "report/table_markup.h"

#include "report/html_escape.h"
#include "report/images.h"

const char HEADER_ROW_START[] = "<TR BGCOLOR=\"#F0F0F0\">\n";

void writeFramedTableStart(FILE *page)
{
    fputs("<TABLE BORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"0\" ALIGN=\"center\">\n", page);
    fputs("<TR>\n", page);
    fprintf(page, "<IMG SRC=\"%s\" WIDTH=\"15\" HEIGHT=\"2\">", SPACER_IMAGE);
    fputs("<TD BGCOLOR=\"#FF9900\">\n", page);
    fputs("<TABLE BORDER=\"0\" CELLSPACING=\"1\" CELLPADDING=\"4\" ", page);
    fputs("STYLE=\"font-family:Arial,Helvetica;font-size:x-small\">\n", page);
    fputs("<THEAD>\n", page);
    fputs(HEADER_ROW_START, page);
}

const char TABLE_HEAD_END[] =
    "</TR>\n"
    "</THEAD>\n"
    "<TBODY>\n";

const char DATA_ROW_START[] =
    "<TR ID=DataRow STYLE=\"color:black;font-weight:normal\" BGCOLOR=\"#FFFFFF\">\n";

const char FRAMED_TABLE_END[] =
    "</TBODY>\n"
    "</TABLE>\n"
    "</TR>\n"
    "</TABLE>\n";

static const char REPORT_TITLE[] = "Tarsk&#174; Compilers code-coverage information";

CoverageLabels coverageLabels(bool reference)
{
    if (reference)
        return CoverageLabels{"missed", "similar", "miss"};
    return CoverageLabels{"cvrd", "uncvrd", "cvrg"};
}

void writeReportTitle(FILE *page, const char *project)
{
    if (project != nullptr)
        fprintf(page, "<title>%s for %s</title>\n", REPORT_TITLE, HtmlValue(project).c_str());
    else
        fprintf(page, "<title>%s</title>\n", REPORT_TITLE);
}
