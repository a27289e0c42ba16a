/* function_pages.cpp -- the covered and uncovered function pages of a
 * source file. */
#include "report/function_pages.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <strings.h>

#include "analysis/percent_format.h"
#include "driver/settings.h"
#include "report/file_frameset.h"
#include "report/html_escape.h"
#include "report/naming.h"
#include "report/page_writer.h"
#include "report/report_files.h"
#include "report/table_sort.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char COVERED_KIND[] = "CvrdFncs";
static const char UNCOVERED_KIND[] = "UncvrdFncs";

static const char HEAD_START[] =
    "<html>\n"
    "<head>\n";
/* "<title>Covered Functions of %s</title>\n" (or Uncovered), and
 * "<base target=\"%s\">\n", cut where their values go. */
static const char TITLE_START[] = "<title>";
static const char COVERED_TITLE[] = "Covered Functions of ";
static const char UNCOVERED_TITLE[] = "Uncovered Functions of ";
static const char TITLE_END[] = "</title>\n";
static const char BASE_TARGET_START[] = "<base target=\"";
static const char BASE_TARGET_END[] = "\">\n";
static const char HEAD_BODY[] =
    "</head>\n"
    "<body bgcolor=\"FFFFFF\">\n";
static const char COVERED_HEADING[] = "<h5 ALIGN=\"left\">covered functions</h5>\n";
static const char UNCOVERED_HEADING[] = "<h5 ALIGN=\"left\">uncovered functions</h5>\n";
static const char TABLE_START[] =
    "<TABLE BORDER=0 CELLPADDING=3 "
    "CELLSPACING=0 STYLE=\"color:black;font-weight:normal;font-family:Verdana,"
    "Arial;font-size:x-small\">\n"
    "<thead>\n";
/* The column headers, each cut where the link to its sorted page goes; the
 * links open in "_self". */
static const char BLOCKS_HEADER_START[] =
    "<TH ALIGN=\"center\"><a target=\"_self\" title=\"sort based on blocks\" href=\"";
static const char BLOCKS_HEADER_END[] = "\">blocks</a></TH>\n";
static const char COVERAGE_HEADER_START[] =
    "<TH ALIGN=\"left\" COLSPAN=\"2\"><a target=\"_self\" title=\"sort based on coverage\" href=\"";
static const char COVERAGE_HEADER_END[] = "\">coverage</a></TH>\n";
static const char MISS_RATE_HEADER_START[] =
    "<TH ALIGN=\"left\" COLSPAN=\"2\"><a target=\"_self\" title=\"sort based on miss rate\" href=\"";
static const char MISS_RATE_HEADER_END[] = "\">miss rate</a></TH>\n";
static const char NAME_HEADER_START[] =
    "<TH ALIGN=\"left\"><a target=\"_self\" title=\"sort based on function name\" href=\"";
static const char NAME_HEADER_END[] = "\">function</a></TH>\n";
static const char HEAD_END[] = "</thead>\n";
static const char BODY_START[] = "<tbody>\n";
/* A row, cut where its numbers and names go:
 *   "<TR>\n"
 *   "<td align=\"center\">%d</td>\n"                                    (blocks)
 *   "<td align=\"right\">%6.2f</td><td align=\"center\">(%d/%d)</td>\n" (or coverage)
 *   "<td align=\"left\"><a href=\"%s#l%d\" title=\"Line %d\">" name "</a></td>\n"
 *   the tests link when there is one, then "</tr>\n". */
static const char ROW_START[] = "<TR>\n";
static const char BLOCKS_CELL_START[] = "<td align=\"center\">";
static const char BLOCKS_CELL_END[] = "</td>\n";
static const char COVERAGE_CELL_START[] = "<td align=\"right\">";
static const char COVERAGE_CELL_MIDDLE[] = "</td><td align=\"center\">(";
static const char COVERAGE_CELL_END[] = ")</td>\n";
static const char NAME_CELL_LINK[] = "<td align=\"left\"><a href=\"";
static const char NAME_CELL_ANCHOR[] = "#l";
static const char NAME_CELL_TITLE[] = "\" title=\"Line ";
static const char NAME_CELL_TEXT[] = "\">";
static const char NAME_CELL_END[] = "</a></td>\n";
static const char ROW_END[] = "</tr>\n";
static const char TESTS_CELL_START[] = "<td align=\"center\">";
/* The query's values are written percent-encoded between these pieces. */
static const char TESTS_LINK[] = "<a target=\"_new\" href=\"http://%s/%s?function_name=";
static const char TESTS_LINK_WITH_SCHEME[] = "<a target=\"_new\" href=\"%s/%s?function_name=";
static const char TESTS_DB_NAME[] = "&dbName=";
static const char TESTS_PROJECT[] = "&project_name=";
static const char TESTS_LINK_END[] = "\" title=\"all cover tests\">Tests</a></td>";
static const char PAGE_END[] =
    "</tbody>\n"
    "</table>\n"
    "</body>\n"
    "</html>\n";

/* Lines of the listing kept visible above a function that a row shows. */
static const uint32_t LINES_ABOVE = 5;

std::string functionListBase(const char *path, bool covered, int number)
{
    std::string base = path;
    base += '_';
    base += covered ? COVERED_KIND : UNCOVERED_KIND;
    base += '_';
    base += std::to_string(number);
    return base;
}

static int compareNames(const func *a, const func *b)
{
    if (a->nameRank != 0 && b->nameRank != 0)
        return compareKey(a->nameRank, b->nameRank);
    return strcmp(a->name != nullptr ? a->name : "", b->name != nullptr ? b->name : "");
}

void rankFunctionNames(func **functions, int count)
{
    auto nameOf = [](const func *f) { return f->name != nullptr ? f->name : ""; };
    auto before = [&](const func *a, const func *b) { return strcmp(nameOf(a), nameOf(b)) < 0; };
    std::vector<func *> byName(functions, functions + count);
    /* The tables are made in the function list's order, which is by name:
     * the covered one ascending, the uncovered one descending. Equal names
     * share a rank, so their order among themselves does not matter. */
    if (!std::is_sorted(byName.begin(), byName.end(), before)) {
        std::reverse(byName.begin(), byName.end());
        if (!std::is_sorted(byName.begin(), byName.end(), before))
            std::sort(byName.begin(), byName.end(), before);
    }
    int32_t rank = 0;
    for (size_t i = 0; i < byName.size(); ++i) {
        if (i == 0 || strcmp(nameOf(byName[i - 1]), nameOf(byName[i])) != 0)
            ++rank;
        byName[i]->nameRank = rank;
    }
}

/* Orders functions by the keys of one sort order: KEY 1 is the name, 2
 * the coverage, then the blocks and the name, 3 the blocks, then the
 * name; the start line last. One type per order, so that each sort's
 * comparison is compiled without asking which keys it has: the sorts of
 * the lists compare each pair of functions several times. */
template <int KEY, bool ASCENDING>
struct FunctionBefore {
    bool operator()(const func *a, const func *b) const
    {
        int result = 0;
        if (KEY == 2)
            result = compareKey(a->percent, b->percent);
        if (KEY != 1 && result == 0)
            result = compareKey(a->blocks, b->blocks);
        if (result == 0)
            result = compareNames(a, b);
        if (result == 0)
            result = compareKey(a->line, b->line);
        return ASCENDING ? result < 0 : result > 0;
    }
};

template <class Before>
static void SelectSortFunctions(func **functions, int count, Before before)
{
    exchangeSortTable(functions, count, before);
}

template <class Before>
static void QuickSortFunctions(func **functions, int low, int high, Before before)
{
    quickSortTable(functions, low, high, before);
}

template <int KEY, bool ASCENDING>
static void sortFunctionsBy(func **functions, int count)
{
    FunctionBefore<KEY, ASCENDING> before;
    if (count < TABLE_QUICKSORT_THRESHOLD)
        SelectSortFunctions(functions, count, before);
    else
        QuickSortFunctions(functions, 0, count - 1, before);
}

void sortFunctions(func **functions, int count, SortType order)
{
    checkSortKeyOrder(order);
    switch (order) {
    case 1: sortFunctionsBy<1, true>(functions, count); break;
    case -1: sortFunctionsBy<1, false>(functions, count); break;
    case 2: sortFunctionsBy<2, true>(functions, count); break;
    case -2: sortFunctionsBy<2, false>(functions, count); break;
    case 3: sortFunctionsBy<3, true>(functions, count); break;
    default: sortFunctionsBy<3, false>(functions, count); break;
    }
}

/* The display name into a page being built (see writeFunctionName). */
static void putFunctionName(PageWriter &page, const char *name)
{
    if (name == nullptr)
        return;
    size_t length = strlen(name);
    if (memchr(name, '@', length) == nullptr) {
        /* No decoration to drop: the escapes alone. */
        page.putEscaped(name, length, HTML_VALUE_ESCAPES);
        return;
    }
    const char *run = name;
    for (const char *p = name; *p != '\0'; ++p) {
        const char *entity = htmlEntity(*p);
        bool decoration = *p == '@' && isdigit(static_cast<unsigned char>(p[1]));
        if (entity == nullptr && !decoration)
            continue;
        page.put(run, static_cast<size_t>(p - run));
        if (entity != nullptr) {
            page.put(entity);
        } else {
            /* A decoration of the argument size, not part of the name. */
            while (isdigit(static_cast<unsigned char>(p[1])))
                ++p;
        }
        run = p + 1;
    }
    page.put(run);
}

void writeFunctionName(FILE *page, const char *name)
{
    PageWriter writer(page);
    putFunctionName(writer, name);
}

/* The links of one list's pages to each other, each made once: the four
 * pages of a list link to the same few, and making a page name costs far
 * more than copying it. Kept for the last list of the thread. */
class ListLinks {
public:
    const std::string &link(const char *path, bool covered, const char *ext, int number)
    {
        const char *extKey = ext != nullptr ? ext : "";
        if (path_ != path || covered_ != covered || ext_ != extKey || noExt_ != (ext == nullptr)) {
            path_ = path;
            covered_ = covered;
            ext_ = extKey;
            noExt_ = ext == nullptr;
            for (std::string &link : links_)
                link.clear();
        }
        if (number < 0 || number >= NUMBERS)
            return other_ = htmlLink(path, covered, ext, number);
        std::string &link = links_[number];
        if (link.empty())
            link = htmlLink(path, covered, ext, number);
        return link;
    }

private:
    static std::string htmlLink(const char *path, bool covered, const char *ext, int number)
    {
        return HtmlValue(getHTMLname(functionListBase(path, covered, number).c_str(), ext)).c_str();
    }

    static const int NUMBERS = 8;
    std::string path_;
    bool covered_ = false;
    std::string ext_;
    bool noExt_ = false;
    std::string links_[NUMBERS];
    std::string other_;
};

/* The link to the list page `number` of the same kind. */
static void putListLink(PageWriter &page, const char *path, bool covered, const char *ext, int number)
{
    static thread_local ListLinks links;
    page.put(links.link(path, covered, ext, number));
}

static void writeTestsLink(FILE *page, const func *function, const FunctionListOptions &options)
{
    fputs(TESTS_CELL_START, page);
    const char *procName = function->procName != nullptr ? function->procName : "";
    const char *link = strncasecmp(options.dbHost, "http://", 7) == 0 ? TESTS_LINK_WITH_SCHEME : TESTS_LINK;
    fprintf(page, link, HtmlValue(options.dbHost).c_str(), HtmlValue(options.viewerPage).c_str());
    writeUrlQueryValue(page, procName);
    fputs(TESTS_DB_NAME, page);
    writeUrlQueryValue(page, options.dbName);
    if (options.dbProject != nullptr) {
        fputs(TESTS_PROJECT, page);
        writeUrlQueryValue(page, options.dbProject);
    }
    fputs(TESTS_LINK_END, page);
}

/* The uncovered list has nothing to show but blocks; under -ref both lists
 * show miss rates. */
static bool showsBlocksOnly(bool covered, const FunctionListOptions &options)
{
    return !covered && !options.reference;
}

/* The listing's page name as the rows' links give it. */
static std::string listingLink(const char *path, const char *ext)
{
    return HtmlValue(getSrcHTMLname(path, ext)).c_str();
}

/* One row up to its name cell's end: the same in every order of a list. */
static void putRowStart(PageWriter &rows, const func *function, bool blocksOnly, const std::string &listing)
{
    rows.putLiteral(ROW_START);
    if (blocksOnly) {
        rows.putLiteral(BLOCKS_CELL_START);
        rows.putInt(static_cast<int>(function->blocks));
        rows.putLiteral(BLOCKS_CELL_END);
    } else {
        rows.putLiteral(COVERAGE_CELL_START);
        rows.putPercent6(roundHalfUp2(function->percent));
        rows.putLiteral(COVERAGE_CELL_MIDDLE);
        rows.putInt(static_cast<int>(function->covered));
        rows.put('/');
        rows.putInt(static_cast<int>(function->blocks));
        rows.putLiteral(COVERAGE_CELL_END);
    }
    /* The start line is compared as the unsigned 32-bit number the
     * profile records, then printed as a signed one. */
    uint32_t line = static_cast<uint32_t>(function->line);
    uint32_t anchor = line > LINES_ABOVE ? line - LINES_ABOVE : line;
    rows.putLiteral(NAME_CELL_LINK);
    rows.put(listing);
    rows.putLiteral(NAME_CELL_ANCHOR);
    rows.putInt(static_cast<int>(anchor));
    rows.putLiteral(NAME_CELL_TITLE);
    rows.putInt(static_cast<int>(line));
    rows.putLiteral(NAME_CELL_TEXT);
    putFunctionName(rows, function->name);
    rows.putLiteral(NAME_CELL_END);
}

/* The list's rows made once, for the pages of its four orders: a row does
 * not depend on the order, only the rows' sequence does. Each function
 * keeps the number of its row, so that a page finds it without a search.
 * Not used with links to the tests, which are written to the page's
 * stream. */
class FunctionListRows {
public:
    FunctionListRows(func *const *functions, int count, bool blocksOnly, const std::string &listing)
    {
        PageWriter rows(&text_);
        where_.reserve(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            size_t start = rows.textSize();
            putRowStart(rows, functions[i], blocksOnly, listing);
            rows.putLiteral(ROW_END);
            where_.push_back(Row{start, rows.textSize() - start});
            functions[i]->listRow = i;
        }
        rows.flush();
    }

    /* The whole row of `function`, one of the list's. */
    void put(PageWriter &page, const func *function) const
    {
        const Row &row = where_[static_cast<size_t>(function->listRow)];
        page.put(text_.data() + row.start, row.length);
    }

private:
    struct Row {
        size_t start;
        size_t length;
    };
    std::string text_;
    std::vector<Row> where_;
};

static void writeFunctionPage(FILE *page, bool covered, SortType order, const char *path, const char *ext,
                              func **functions, int count, const FunctionListOptions &options,
                              const FunctionListRows *made)
{
    bool blocksOnly = showsBlocksOnly(covered, options);

    PageWriter rows(page);
    rows.putLiteral(HEAD_START);
    rows.putLiteral(TITLE_START);
    rows.put(covered ? COVERED_TITLE : UNCOVERED_TITLE);
    putHtmlValue(rows, path);
    rows.putLiteral(TITLE_END);
    rows.putLiteral(BASE_TARGET_START);
    rows.put(LISTING_FRAME_NAME);
    rows.putLiteral(BASE_TARGET_END);
    rows.putLiteral(HEAD_BODY);
    rows.put(covered ? COVERED_HEADING : UNCOVERED_HEADING);
    rows.putLiteral(TABLE_START);

    if (blocksOnly) {
        rows.putLiteral(BLOCKS_HEADER_START);
        putListLink(rows, path, covered, ext, sortHeaderLink(order, SORT_COLUMN_BLOCKS));
        rows.putLiteral(BLOCKS_HEADER_END);
    } else {
        rows.put(options.reference ? MISS_RATE_HEADER_START : COVERAGE_HEADER_START);
        putListLink(rows, path, covered, ext, sortHeaderLink(order, SORT_COLUMN_COVERAGE));
        rows.put(options.reference ? MISS_RATE_HEADER_END : COVERAGE_HEADER_END);
    }
    rows.putLiteral(NAME_HEADER_START);
    putListLink(rows, path, covered, ext, sortHeaderLink(order, SORT_COLUMN_NAME));
    rows.putLiteral(NAME_HEADER_END);
    rows.putLiteral(HEAD_END);

    sortFunctions(functions, count, order);
    rows.putLiteral(BODY_START);
    if (made != nullptr) {
        for (int i = 0; i < count; ++i)
            made->put(rows, functions[i]);
        rows.putLiteral(PAGE_END);
        return;
    }
    /* Every row links to the same listing: its name is made once. */
    const std::string listing = listingLink(path, ext);
    for (int i = 0; i < count; ++i) {
        const func *function = functions[i];
        putRowStart(rows, function, blocksOnly, listing);
        if (options.links) {
            rows.flush();
            writeTestsLink(page, function, options);
        }
        rows.putLiteral(ROW_END);
    }
    rows.putLiteral(PAGE_END);
}

void writeFunctionList(FILE *page, bool covered, SortType order, const char *path, const char *ext,
                       func **functions, int count, const FunctionListOptions &options)
{
    writeFunctionPage(page, covered, order, path, ext, functions, count, options, nullptr);
}

/* The run's settings for the lists. */
static FunctionListOptions runListOptions()
{
    FunctionListOptions options;
    options.reference = compWithRef != 0;
    options.links = g_isLinksFlag != 0;
    options.dbHost = g_lpszDBHostName != nullptr ? g_lpszDBHostName : "";
    options.dbName = g_lpszDBName != nullptr ? g_lpszDBName : "";
    options.dbProject = g_lpszDBProjName;
    options.viewerPage = g_lpszFuncLinkName != nullptr ? g_lpszFuncLinkName : "";
    return options;
}

/* Creates the list page of `path` in `order`; see bOutputFunctionCoverageFor. */
static bool createFunctionPage(bool covered, SortType order, const char *path, const char *ext, func **functions,
                               int count, const FunctionListOptions &options, const FunctionListRows *made)
{
    checkSortOption(order);
    const std::string name = getDirHTMLname(functionListBase(path, covered, order + 3).c_str(), ext);
    FILE *page = openPageFile(name.c_str(), {"Cannot open %s for output!\n", name});
    if (page == nullptr)
        return false;
    writeFunctionPage(page, covered, order, path, ext, functions, count, options, made);
    checked_close_rewritten(page, name.c_str());
    return true;
}

bool bOutputFunctionCoverageFor(bool covered, SortType order, const char *path, const char *ext,
                                func **functions, int count)
{
    if (g_bNoHTML)
        return true;
    return createFunctionPage(covered, order, path, ext, functions, count, runListOptions(), nullptr);
}

bool writeFunctionListPages(bool covered, const SortType *orders, int orderCount, const char *path, const char *ext,
                            func **functions, int count)
{
    if (g_bNoHTML)
        return true;
    FunctionListOptions options = runListOptions();
    std::unique_ptr<FunctionListRows> made;
    if (!options.links)
        made.reset(new FunctionListRows(functions, count, showsBlocksOnly(covered, options), listingLink(path, ext)));
    for (int i = 0; i < orderCount; ++i)
        if (!createFunctionPage(covered, orders[i], path, ext, functions, count, options, made.get()))
            return false;
    return true;
}
