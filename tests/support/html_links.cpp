// html_links.cpp -- following the links of a written report.
#include "tests/support/html_links.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace testsupport {

namespace {

// True when `html` holds `attribute` (lower case) at `at`, in any letter case,
// as a whole word.
bool AttributeAt(const std::string &html, size_t at, const std::string &attribute)
{
    if (at > 0 && (isalnum(static_cast<unsigned char>(html[at - 1])) || html[at - 1] == '_'))
        return false;
    if (html.size() - at < attribute.size())
        return false;
    for (size_t i = 0; i < attribute.size(); ++i) {
        if (tolower(static_cast<unsigned char>(html[at + i])) != attribute[i])
            return false;
    }
    return true;
}

}  // namespace

std::vector<std::string> LinksOf(const std::string &html)
{
    std::vector<std::string> links;
    for (size_t at = 0; at < html.size(); ++at) {
        for (const std::string attribute : {"href=\"", "src=\""}) {
            if (!AttributeAt(html, at, attribute))
                continue;
            size_t start = at + attribute.size();
            size_t end = html.find('"', start);
            if (end == std::string::npos)
                return links;
            links.push_back(html.substr(start, end - start));
            at = end;
            break;
        }
    }
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
