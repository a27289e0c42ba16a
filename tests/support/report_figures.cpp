// report_figures.cpp -- regular expressions over the report's own bytes.
#include "tests/support/report_figures.h"

#include <algorithm>
#include <regex>

namespace testsupport {

std::vector<std::string> SummaryPageCells(const std::string &page)
{
    std::vector<std::string> cells;
    std::regex cell("<TD ALIGN=\"center\"[^>]*>\\s*([0-9.,]+)</TD>");
    for (auto it = std::sregex_iterator(page.begin(), page.end(), cell); it != std::sregex_iterator(); ++it) {
        std::string number = (*it)[1];
        number.erase(std::remove(number.begin(), number.end(), ','), number.end());
        cells.push_back(number);
    }
    return cells;
}

std::string FirstMatch(const std::string &text, const std::string &pattern)
{
    std::smatch match;
    return std::regex_search(text, match, std::regex(pattern)) ? match[1].str() : "(none)";
}

std::map<std::string, FileFigures> JsonFileRows(const std::string &json)
{
    std::map<std::string, FileFigures> rows;
    std::regex row(R"re(\{"path":"([^"]*)","functions":(\d+),"functions_covered":(\d+),"blocks":(\d+),"blocks_covered":(\d+))re");
    for (auto it = std::sregex_iterator(json.begin(), json.end(), row); it != std::sregex_iterator(); ++it) {
        FileFigures f;
        f.functions = std::stol((*it)[2]);
        f.functions_covered = std::stol((*it)[3]);
        f.blocks = std::stol((*it)[4]);
        f.blocks_covered = std::stol((*it)[5]);
        rows[(*it)[1]] = f;
    }
    return rows;
}

}  // namespace testsupport
