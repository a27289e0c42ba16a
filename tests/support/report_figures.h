// report_figures.h -- the numbers of a written report, read back: the summary
// page's cells and the JSON summary's per-file rows.
#ifndef VEMCOV_TESTS_SUPPORT_REPORT_FIGURES_H
#define VEMCOV_TESTS_SUPPORT_REPORT_FIGURES_H

#include <map>
#include <string>
#include <vector>

namespace testsupport {

// The summary page's twelve number cells, in page order, without the
// thousands commas: files, covered, uncovered, percent; functions, covered,
// uncovered, percent; blocks, covered, uncovered, percent.
std::vector<std::string> SummaryPageCells(const std::string &page);

// The first group of the first match of `pattern` in `text`, or "(none)".
std::string FirstMatch(const std::string &text, const std::string &pattern);

struct FileFigures {
    long functions = 0;
    long functions_covered = 0;
    long blocks = 0;
    long blocks_covered = 0;
    bool operator==(const FileFigures &o) const
    {
        return functions == o.functions && functions_covered == o.functions_covered && blocks == o.blocks &&
               blocks_covered == o.blocks_covered;
    }
};

// The per-file rows of a JSON summary (-json), by path.
std::map<std::string, FileFigures> JsonFileRows(const std::string &json);

}  // namespace testsupport

#endif
