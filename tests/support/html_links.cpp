// html_links.cpp -- following the links of a written report.
#include "tests/support/html_links.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace testsupport {

std::vector<std::string> LinksOf(const std::string &html)
{
    static const std::regex link("\\b(?:href|src)=\"([^\"]*)\"", std::regex::icase);
    std::vector<std::string> links;
    for (auto it = std::sregex_iterator(html.begin(), html.end(), link); it != std::sregex_iterator(); ++it)
        links.push_back((*it)[1].str());
    return links;
}

std::vector<ReportLink> BrokenLinks(const std::string &dir, const std::string &rootPage,
                                    const std::function<bool(const std::string &file)> &skip,
                                    std::vector<std::string> *visited)
{
    std::vector<ReportLink> broken;
    std::set<std::string> seen = {rootPage};
    std::vector<std::string> pending = {rootPage};
    if (!fs::exists(fs::path(dir) / rootPage))
        broken.push_back({"", rootPage, rootPage});
    while (!pending.empty()) {
        std::string page = pending.back();
        pending.pop_back();
        if (visited != nullptr)
            visited->push_back(page);
        std::ifstream in(fs::path(dir) / page, std::ios::binary);
        std::ostringstream html;
        html << in.rdbuf();
        for (const std::string &target : LinksOf(html.str())) {
            std::string path = target.substr(0, target.find('#'));
            if (path.empty() || path.find(':') != std::string::npos)
                continue;
            std::string file = (fs::path(page).parent_path() / path).lexically_normal().string();
            if (skip(file) || seen.count(file) != 0)
                continue;
            seen.insert(file);
            if (!fs::is_regular_file(fs::path(dir) / file)) {
                broken.push_back({page, target, file});
                continue;
            }
            if (fs::path(file).extension() == ".HTML")
                pending.push_back(file);
            else if (visited != nullptr)
                visited->push_back(file);
        }
    }
    return broken;
}

}  // namespace testsupport
