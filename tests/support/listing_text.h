// listing_text.h -- source text as a listing page shows it, made one byte
// at a time: the four characters of markup as entities, a line feed as the
// end of the line's anchor. The expected side of the tests of the page
// writer's escaper and of the listing.
#ifndef VEMCOV_TESTS_SUPPORT_LISTING_TEXT_H
#define VEMCOV_TESTS_SUPPORT_LISTING_TEXT_H

#include <string>

namespace testsupport {

inline std::string ListingText(const std::string &text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '"': out += "&quot;"; break;
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '\n': out += "</a>\n"; break;
        default: out += c;
        }
    }
    return out;
}

}  // namespace testsupport

#endif
