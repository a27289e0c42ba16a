// html_links.h -- follows the links of a written report as a reader would
// click through it.
#ifndef VEMCOV_TESTS_SUPPORT_HTML_LINKS_H
#define VEMCOV_TESTS_SUPPORT_HTML_LINKS_H

#include <functional>
#include <string>

namespace testsupport {

// Follows every href and src of the report below `dir`, from the root page
// "CODE_COVERAGE.HTML" and from the toolbar (which opens the help page), and
// fails the current test for each link to a file that was not written (the
// letter case must match), each "#name" that its page does not hold as an
// anchor unless `anchorMayMiss(link)`, and each written page or image of
// "CodeCoverage" that no link reaches. Links with a scheme ("http:",
// "mailto:") are not followed.
void ExpectLinksResolve(const std::string &dir,
                        const std::function<bool(const std::string &link)> &anchorMayMiss = {});

}  // namespace testsupport

#endif
