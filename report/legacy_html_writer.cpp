/* legacy_html_writer.cpp -- the documented HTML report, step by step as
 * the run has always written it. */
#include "report/legacy_html_writer.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

#include "analysis/coverage_state.h"
#include "analysis/module_handoff.h"
#include "analysis/coverage_store.h"
#include "driver/console.h"
#include "driver/settings.h"
#include "report/file_table.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "report/summary.h"
#include "report/toolbar.h"

static const char MSG_CANNOT_CREATE[] = "ERROR: cannot create the report directory %s: %s\n";

/* The report directory (an existing one is reused, so the result is not
 * checked) and the report's fixed files: images, help and toolbar. */
void LegacyHtmlWriter::beginRun()
{
    if (g_bNoHTML)
        return;
    if (!setReportRoot(g_lpszOutDir)) {
        fprintf(stderr, MSG_CANNOT_CREATE, g_lpszOutDir, strerror(errno));
        tvx_Exit(1);
    }
    makeReportDir(REPORT_DIR, 040777);
    if (!createToolBar(g_lpszOutFileExt))
        tvx_Exit(1);
}

LegacyHtmlWriter::LegacyHtmlWriter(int pageThreads)
{
    if (pageThreads > 0)
        jobs_ = std::make_unique<PageJobs>(pageThreads);
}

/* The pages of a module taken over from the analysis, on a page thread. */
static void writeDetachedModule(const DetachedModule &module, const char *ext)
{
    static thread_local ListingWorkArea work;
    ModulePages pages{module.store.currentFile->path, const_cast<coverage_list *>(&module.store), module.markers,
                      module.functionsByLine, module.functionPercent, module.blockPercent,
                      module.covered, module.coveredCount, module.uncovered, module.uncoveredCount};
    if (!writeModulePages(pages, ext, &work))
        tvx_Exit(1);
}

void LegacyHtmlWriter::module(const ModuleReport &, bool analysed)
{
    if (!analysed || g_bNoHTML)
        return;
    if (jobs_ == nullptr || g_cl.currentFile == nullptr) {
        if (!bOutputLineCoverage(g_lpszOutFileExt, &listingWork_))
            tvx_Exit(1);
        return;
    }
    std::shared_ptr<DetachedModule> module(detachCurrentModule());
    const char *ext = g_lpszOutFileExt;
    jobs_->submit([module, ext] { writeDetachedModule(*module, ext); });
}

/* The covered-file and uncovered-file tables, each only when it has files,
 * then the summary page and the root frameset. */
void LegacyHtmlWriter::endRun(const RunReport &)
{
    if (jobs_ != nullptr)
        jobs_->wait();
    if (g_bNoHTML)
        return;
    int coveredCount = 0, uncoveredCount = 0;
    filename_list_node **covered = nullptr, **uncovered = nullptr;
    if (g_cl.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered) == -1)
        tvx_Exit(1);
    if (coveredCount > 0
        && !bCreateCovProfMain(COVERED_FILES_PAGE, g_lpszOutFileExt, g_lpszProjName, coveredCount, covered))
        tvx_Exit(1);
    if (uncoveredCount > 0
        && !bCreateUnCovProfMain(UNCOVERED_FILES_PAGE, g_lpszOutFileExt, g_lpszProjName, uncoveredCount,
                                 uncovered))
        tvx_Exit(1);
    if (!bCreateSummary(g_lpszProjName, ROOT_PAGE, SUMMARY_PAGE,
                        coveredCount > 0 ? COVERED_FILES_PAGE : nullptr,
                        uncoveredCount > 0 ? UNCOVERED_FILES_PAGE : nullptr, g_lpszOutFileExt))
        tvx_Exit(1);
    free(covered);
    free(uncovered);
}
