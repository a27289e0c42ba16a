/* percent_format.h -- the percentage rule of the report's pages. */
#ifndef VEMCOV_ANALYSIS_PERCENT_FORMAT_H
#define VEMCOV_ANALYSIS_PERCENT_FORMAT_H

#include <cstdint>

/* 100 * covered / total, or 0 when total is 0. */
double coveragePercent(uint64_t covered, uint64_t total);

/* `percent` rounded half up to two decimals, as the pages print it with
 * "%6.2f": multiplied by 100, truncated, raised by one when the remainder
 * is at least 0.5, divided by 100. */
double roundHalfUp2(double percent);

#endif
