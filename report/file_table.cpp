/* file_table.cpp -- the covered-file and uncovered-file tables. */
#include "report/file_table.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "analysis/percent_format.h"
#include "driver/number_format.h"
#include "driver/settings.h"
#include "report/html_escape.h"
#include "report/naming.h"
#include "report/page_foot.h"
#include "report/report_files.h"
#include "report/table_markup.h"
#include "report/table_sort.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char TABLE_HEADING_START[] =
    "<h4 ALIGN=\"center\" STYLE=\"font-family:Arial,Helvetica;color:#3366ff\">";

/* Orders positions of the file array by the keys of `order`. */
struct FileBefore {
    filename_list_node **files;
    SortType order;

    bool operator()(int a, int b) const
    {
        const filename_list_node *x = files[a];
        const filename_list_node *y = files[b];
        int key = order < 0 ? -order : order;
        int result = 0;
        if (key == 2)
            result = compareKey(x->funcPercent, y->funcPercent);
        else if (key == 3)
            result = compareKey(x->blockPercent, y->blockPercent);
        if (result == 0)
            result = strcmp(pathBaseName(x->path), pathBaseName(y->path));
        return order > 0 ? result < 0 : result > 0;
    }
};

static void SelectSortFiles(int *index, int count, const FileBefore &before)
{
    exchangeSortTable(index, count, before);
}

static void QuickSortFiles(int *index, int low, int high, const FileBefore &before)
{
    quickSortTable(index, low, high, before);
}

void sortFileIndex(int *index, int count, filename_list_node **files, SortType order)
{
    checkSortKeyOrder(order);
    FileBefore before{files, order};
    if (count < TABLE_QUICKSORT_THRESHOLD)
        SelectSortFiles(index, count, before);
    else
        QuickSortFiles(index, 0, count - 1, before);
}

/* The second-row headers of the function or block columns: the total, and
 * where they are shown the covered number and the percentage, which links
 * to the page sorted by it. */
static void writeColumnHeaders(FILE *page, SortType order, const char *name, const char *ext,
                               bool detailed, const CoverageLabels &labels, SortColumn column,
                               const char *sortedBy)
{
    fputs("<TH ALIGN=\"center\">total</TH>\n", page);
    if (!detailed)
        return;
    fprintf(page, "<TH ALIGN=\"center\">%s</TH>\n", labels.covered);
    std::string link = getVerHTMLname(name, sortHeaderLink(order, column), ext);
    fprintf(page, "<TH ALIGN=\"center\"><a target=\"%s\" title=\"sort based on %s%%\" href=\"%s\">%s%%</a></TH>\n",
            "_self", sortedBy, HtmlValue(link.c_str()).c_str(), labels.coverage);
}

/* The two header rows: the name, then function and block columns; the
 * covered and percentage columns only where they are shown. */
static void writeTableHeader(FILE *page, SortType order, const char *name, const char *ext,
                             bool detailed, bool reference)
{
    const CoverageLabels labels = coverageLabels(reference);
    std::string link = getVerHTMLname(name, sortHeaderLink(order, SORT_COLUMN_NAME), ext);
    fprintf(page,
            "<TH ALIGN=\"left\" ROWSPAN=\"2\"><a target=\"%s\" title=\"sort based on file name\" "
            "href=\"%s\">Name</a></TH>\n",
            "_self", HtmlValue(link.c_str()).c_str());
    const int span = detailed ? 3 : 1;
    fprintf(page, "<TH ALIGN=\"center\" COLSPAN=\"%d\">Functions</TH>\n", span);
    fprintf(page, "<TH ALIGN=\"center\" COLSPAN=\"%d\">Blocks</TH>\n", span);
    fputs("</TR>\n", page);

    fputs(HEADER_ROW_START, page);
    writeColumnHeaders(page, order, name, ext, detailed, labels, SORT_COLUMN_COVERAGE,
                       reference ? "miss rate" : "function coverage");
    writeColumnHeaders(page, order, name, ext, detailed, labels, SORT_COLUMN_BLOCKS, "block coverage");
    fputs(TABLE_HEAD_END, page);
}

/* "<TD ALIGN=\"right\">%s</TD>\n" of the grouped number. */
static void putNumberCell(PageWriter &row, uint64_t value)
{
    char number[32];
    row.putLiteral("<TD ALIGN=\"right\">");
    row.put(u64_to_ascii(number, value));
    row.putLiteral("</TD>\n");
}

/* "<TD ALIGN=\"right\">%6.2f</TD>\n" of the rounded percentage. */
static void putPercentCell(PageWriter &row, double percent)
{
    row.putLiteral("<TD ALIGN=\"right\">");
    row.putPercent6(roundHalfUp2(percent));
    row.putLiteral("</TD>\n");
}

static void writeFileRow(PageWriter &row, const filename_list_node *file, const char *ext, bool detailed)
{
    row.put(DATA_ROW_START);
    row.putLiteral("<TD ALIGN=\"left\"><a href=\"");
    putHtmlValue(row, getHTMLname(file->path, ext));
    row.putLiteral("\" title=\"");
    putHtmlValue(row, file->path);
    row.putLiteral("\">");
    putHtmlValue(row, pathBaseName(file->path));
    row.putLiteral("</a></TD>\n");
    putNumberCell(row, file->totalFuncs);
    if (detailed) {
        putNumberCell(row, file->coveredFuncs);
        putPercentCell(row, file->funcPercent);
    }
    putNumberCell(row, file->totalBlocks);
    if (detailed) {
        putNumberCell(row, file->coveredBlocks);
        putPercentCell(row, file->blockPercent);
    }
    row.putLiteral("</TR>\n");
}

bool bCreateCov(bool covered, SortType order, const char *name, const char *ext,
                const char *project, int count, filename_list_node **files)
{
    checkSortOption(order);
    const std::string pageName = getDirVerHTMLname(name, order + 3, ext);
    FILE *page = openPageFile(pageName.c_str(), {"Unable to create root html file %s!\n", name});
    if (page == nullptr)
        return false;
    const bool reference = compWithRef != 0;
    /* The uncovered table of a plain run shows totals only. */
    const bool detailed = covered || reference;
    const char *kind = covered ? "Covered" : "Uncovered";

    fputs("<html>\n", page);
    fputs("<head>\n", page);
    writeReportTitle(page, project);
    fprintf(page, "<base target=\"%s\">\n", "_parent");
    fputs("</head>\n", page);
    fputs("<body bgcolor=\"FFFFFF\">\n", page);
    fputs(TABLE_HEADING_START, page);
    if (project != nullptr)
        fprintf(page, "%s Files in %s</h4>\n", kind, HtmlValue(project).c_str());
    else
        fprintf(page, "%s Files</h4>\n", kind);
    fputs("<ol>\n", page);

    std::vector<int> index(count > 0 ? count : 0);
    for (int i = 0; i < count; ++i)
        index[i] = i;
    sortFileIndex(index.data(), count, files, order);

    writeFramedTableStart(page);
    writeTableHeader(page, order, name, ext, detailed, reference);
    {
        PageWriter rows(page);
        for (int i = 0; i < count; ++i)
            writeFileRow(rows, files[index[i]], ext, detailed);
    }
    fputs(FRAMED_TABLE_END, page);
    fputs("</ol>\n", page);
    writePageFoot(page, g_lpszMailAddr, g_lpszMailName);
    fputs("\n", page);
    checked_close_rewritten(page, pageName.c_str());
    return true;
}

/* Writes the pages of one table in the given orders. */
static bool createTablePages(bool covered, const SortType *orders, int orderCount, const char *name,
                             const char *ext, const char *project, int count,
                             filename_list_node **files)
{
    for (int i = 0; i < orderCount; ++i) {
        if (!bCreateCov(covered, orders[i], name, ext, project, count, files))
            return false;
    }
    return true;
}

bool bCreateCovProfMain(const char *name, const char *ext, const char *project, int count,
                        filename_list_node **files)
{
    static const SortType orders[] = {1, -1, 2, -2, 3, -3};
    return createTablePages(true, orders, 6, name, ext, project, count, files);
}

bool bCreateUnCovProfMain(const char *name, const char *ext, const char *project, int count,
                          filename_list_node **files)
{
    static const SortType orders[] = {1, -1, 2, -2, 3, -3};
    /* Without a reference profile the uncovered table sorts by name only. */
    const int orderCount = compWithRef != 0 ? 6 : 2;
    return createTablePages(false, orders, orderCount, name, ext, project, count, files);
}
