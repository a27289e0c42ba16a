/* line_coverage.cpp -- the pages of one source file. */
#include "report/line_coverage.h"

#include <cstdio>
#include <string>

#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"
#include "driver/settings.h"
#include "report/file_frameset.h"
#include "report/function_pages.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "report/source_listing.h"
#include "shared/vemtra/tallyfold/checked_io.h"

/* The page is written in large pieces. */

static const SortType COVERED_ORDERS[] = {1, -1, 2, -2};
static const SortType UNCOVERED_ORDERS[] = {1, -1, 3, -3};
static const SortType UNCOVERED_ORDERS_REFERENCE[] = {1, -1, 2, -2};

/* Steps 1 to 9: the listing page. */
static bool writeListing(const ModulePages &module, const char *ext, ListingWorkArea *work)
{
    const char *path = module.path;
    MarkerLine marker;
    markerLineCreate(&marker);

    /* The source is opened even when its bytes were kept: a source that
     * went away since its lines were counted still ends the listing. */
    FILE *source = VEMTRA_Open_Regular_File(path);
    if (source == nullptr) {
        fprintf(stderr, "Error - Cannot open %s!\n", path);
        markerLineFree(&marker);
        return false;
    }
    const std::string name = getDirSrcHTMLname(path, ext);
    FILE *page = openPageFile(name.c_str(), {"Cannot open %s for output!\n", name});
    if (page == nullptr) {
        fclose(source);
        markerLineFree(&marker);
        return false;
    }
    /* The bytes read when the module's lines were counted (the store's
     * current file is the module's): not read a second time. */
    size_t keptSize = 0;
    const char *kept = module.store->currentSourceBytes(&keptSize);

    ListingSource file;
    file.path = path;
    file.funcPercent = module.functionPercent;
    file.blockPercent = module.blockPercent;
    file.store = module.store;
    file.infeasible = module.infeasible;
    file.functionsByLine = module.functionsByLine;
    file.bytes = kept;
    file.size = keptSize;
    ListingOptions options;
    options.counts = g_bXCOUNTS != 0;
    options.reference = compWithRef != 0;
    options.floatingInfo = g_bIColorfloating != 0;
    options.ownerAddress = g_lpszMailAddr;
    options.ownerName = g_lpszMailName;
    bool written = writeSourceListing(page, source, file, options, &marker, work->readBuffer);

    fclose(source);
    checked_close_rewritten(page, name.c_str());
    markerLineFree(&marker);
    return written;
}

/* Step 10: the list pages of one kind, in its orders. */
static bool writeLists(bool covered, const char *path, const char *ext, func **functions, int count)
{
    const SortType *orders = covered ? COVERED_ORDERS : (compWithRef ? UNCOVERED_ORDERS_REFERENCE : UNCOVERED_ORDERS);
    rankFunctionNames(functions, count);
    return writeFunctionListPages(covered, orders, 4, path, ext, functions, count);
}

bool writeModulePages(const ModulePages &module, const char *ext, ListingWorkArea *work)
{
    if (!writeListing(module, ext, work))
        return false;
    bool hasCovered = module.coveredCount > 0;
    bool hasUncovered = module.uncoveredCount > 0;
    if (hasCovered && !writeLists(true, module.path, ext, module.covered, module.coveredCount))
        return false;
    if (hasUncovered && !writeLists(false, module.path, ext, module.uncovered, module.uncoveredCount))
        return false;
    return bCreateFileFrameset(module.path, ext, hasCovered, hasUncovered);
}

bool bOutputLineCoverage(const char *ext, ListingWorkArea *work)
{
    if (g_cl.currentFile == nullptr)
        return false;
    ModulePages module{g_cl.currentFile->path, &g_cl, pars, first_func_line, functionCoverage, blockCoverage,
                       fileFuncsCovered, numFileFuncsCovered, fileFuncsUncovered, numFileFuncsUncovered};
    return writeModulePages(module, ext, work);
}
