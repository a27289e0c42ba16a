/* html5_writer.h -- the modern view of the report (-html5 <dir>): in <dir>
 * (created when missing) index.html, one page per source file below
 * files/, and style.css and report.js shared by all pages. Written from the
 * report model beside the documented report, or alone with -nohtml.
 */
#ifndef VEMCOV_REPORT_HTML5_WRITER_H
#define VEMCOV_REPORT_HTML5_WRITER_H

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "report/html5_assets.h"
#include "report/page_jobs.h"
#include "report/report_writer.h"

class Html5Writer : public ReportWriter {
public:
    /* `modulePaths` are the paths of every module of the run (they decide
     * the common root that pages show paths below); `project` is -prj or
     * null; `reference` is set under -ref; with `pageThreads` above 0 the
     * file pages are made on that many threads. */
    Html5Writer(const char *dir, const std::vector<std::string> &modulePaths, const char *project, bool reference,
                const Html5Colours &colours, int pageThreads = 0);
    bool readsPositions() const override { return true; }
    void beginRun() override;
    void module(const ModuleReport &module, bool analysed) override;
    void endRun(const RunReport &run) override;

private:
    struct FileRow {
        std::string shown;     /* path below the common root */
        std::string page;      /* page path below the view's root */
        uint32_t functions, functionsCovered;
        uint64_t blocks, blocksCovered;
        double functionPercent, blockPercent;
    };
    std::string pagePathFor(const std::string &shown);

    std::string dir_;
    std::string root_;         /* common directory of the modules, with its '/' */
    const char *project_;
    bool reference_;
    Html5Colours colours_;
    std::vector<FileRow> rows_;
    std::unordered_set<std::string> usedPages_;
    std::unordered_set<std::string> madeDirs_;     /* page directories made so far */
    std::unordered_map<std::string, int> nextNumber_;  /* per page name taken, the number to try next */
    std::unique_ptr<PageJobs> jobs_;  /* -j: file pages written on these threads */
};

/* The longest directory prefix (ending in '/') that every path shares; ""
 * when they share none. */
std::string commonDirectory(const std::vector<std::string> &paths);

/* A relative page path for a shown path: every byte that is not a letter,
 * a digit, '.', '-', '_' or '/' becomes '_'; "." and ".." components and
 * empty ones become "_"; components longer than 200 bytes are cut and
 * given a hash of the whole; ".html" is appended. */
std::string html5PageName(const std::string &shown);

#endif
