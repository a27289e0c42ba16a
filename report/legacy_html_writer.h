/* legacy_html_writer.h -- the documented HTML report (root frameset,
 * "CodeCoverage/" with its tables, listings and function lists) as one
 * writer of the report model. */
#ifndef VEMCOV_REPORT_LEGACY_HTML_WRITER_H
#define VEMCOV_REPORT_LEGACY_HTML_WRITER_H

#include <memory>

#include "report/line_coverage.h"
#include "report/page_jobs.h"
#include "report/report_writer.h"

class LegacyHtmlWriter : public ReportWriter {
public:
    /* With `pageThreads` above 0, each module's pages are made by one of
     * that many threads while the run analyses the next modules; the files
     * are the same. */
    explicit LegacyHtmlWriter(int pageThreads = 0);
    /* Unless -nohtml: the report directory, the toolbar, help and images. */
    void beginRun() override;
    /* Unless -nohtml: an analysed module's listing, lists and frameset. */
    void module(const ModuleReport &module, bool analysed) override;
    /* Unless -nohtml: the file tables, the summary and the root frameset. */
    void endRun(const RunReport &run) override;

private:
    ListingWorkArea listingWork_;
    std::unique_ptr<PageJobs> jobs_;
};

#endif
