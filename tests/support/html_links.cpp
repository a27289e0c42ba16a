// html_links.cpp -- following the links of a written report.
#include "tests/support/html_links.h"

#include <cctype>
#include <cstring>
#include <filesystem>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scratch_dir.h"

namespace fs = std::filesystem;

namespace testsupport {

namespace {

// An attribute's value as a browser reads it: the entities the report
// writes for markup characters decoded.
std::string DecodeEntities(std::string value)
{
    static const struct {
        const char *entity;
        char c;
    } entities[] = {{"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&#39;", '\''}, {"&amp;", '&'}};
    for (size_t at = value.find('&'); at != std::string::npos; at = value.find('&', at + 1)) {
        for (const auto &e : entities) {
            if (value.compare(at, strlen(e.entity), e.entity) == 0) {
                value.replace(at, strlen(e.entity), 1, e.c);
                break;
            }
        }
    }
    return value;
}

// The values of the href and src attributes of a page (any letter case), in
// order of appearance, decoded.
std::vector<std::string> LinksOf(const std::string &html)
{
    std::vector<std::string> links;
    for (size_t at = 0; at < html.size(); ++at) {
        if (at > 0 && (isalnum(static_cast<unsigned char>(html[at - 1])) || html[at - 1] == '_'))
            continue;
        for (const std::string attribute : {"href=\"", "src=\""}) {
            if (html.size() - at < attribute.size())
                continue;
            bool same = true;
            for (size_t i = 0; i < attribute.size() && same; ++i)
                same = tolower(static_cast<unsigned char>(html[at + i])) == attribute[i];
            if (!same)
                continue;
            size_t start = at + attribute.size();
            size_t end = html.find('"', start);
            if (end == std::string::npos)
                return links;
            links.push_back(DecodeEntities(html.substr(start, end - start)));
            at = end;
            break;
        }
    }
    return links;
}

}  // namespace

void ExpectLinksResolve(const std::string &dir, const std::function<bool(const std::string &link)> &anchorMayMiss)
{
    std::set<std::string> reached;
    std::vector<std::string> pending;
    for (const char *start : {"CODE_COVERAGE.HTML", "CodeCoverage/__TOOLBAR.HTML"}) {
        EXPECT_TRUE(fs::is_regular_file(fs::path(dir) / start)) << start << " was not written";
        reached.insert(start);
        pending.push_back(start);
    }
    while (!pending.empty()) {
        std::string page = pending.back();
        pending.pop_back();
        for (const std::string &link : LinksOf(ReadFile(dir + "/" + page))) {
            size_t hash = link.find('#');
            std::string path = link.substr(0, hash);
            if (path.empty() || path.find(':') != std::string::npos)
                continue;
            std::string file = (fs::path(page).parent_path() / path).lexically_normal().string();
            if (!fs::is_regular_file(fs::path(dir) / file)) {
                ADD_FAILURE() << page << " links to " << link << ", but " << file << " was not written";
                continue;
            }
            if (hash != std::string::npos && !(anchorMayMiss && anchorMayMiss(link))) {
                std::string anchor = "<a name=\"" + link.substr(hash + 1) + "\"";
                EXPECT_NE(ReadFile(dir + "/" + file).find(anchor), std::string::npos)
                    << page << " links to " << link << ", which " << file << " does not hold";
            }
            if (reached.insert(file).second && fs::path(file).extension() == ".HTML")
                pending.push_back(file);
        }
    }
    for (const auto &entry : fs::directory_iterator(fs::path(dir) / "CodeCoverage")) {
        std::string file = "CodeCoverage/" + entry.path().filename().string();
        EXPECT_EQ(reached.count(file), 1u) << file << " is written but no link reaches it";
    }
}

}  // namespace testsupport
