// html_links.h -- checks that every page and image a report refers to was
// written: each href and src of each HTML page, resolved against the page's
// own directory, must name an existing file, with the exact letter case.
#ifndef VEMCOV_TESTS_SUPPORT_HTML_LINKS_H
#define VEMCOV_TESTS_SUPPORT_HTML_LINKS_H

#include <functional>
#include <string>
#include <vector>

namespace testsupport {

struct ReportLink {
    std::string page;    // the page that holds the link, relative to the run directory
    std::string target;  // the link as written
    std::string file;    // the file it names, relative to the run directory
};

// The href and src values of one page, in order of appearance.
std::vector<std::string> LinksOf(const std::string &html);

// Walks every .HTML page reachable from `rootPage` (relative to `dir`) and
// returns the links whose file does not exist. Links with a scheme
// ("http:", "mailto:") are not followed; a "#fragment" is ignored. Links for
// which `skip(file)` is true are neither checked nor followed. `visited`, if
// given, receives every page and image that was reached.
std::vector<ReportLink> BrokenLinks(const std::string &dir, const std::string &rootPage,
                                    const std::function<bool(const std::string &file)> &skip,
                                    std::vector<std::string> *visited = nullptr);

}  // namespace testsupport

#endif
