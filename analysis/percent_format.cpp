/* percent_format.cpp -- percentages and their rounding for printing. */
#include "analysis/percent_format.h"

#include <cmath>

double coveragePercent(uint64_t covered, uint64_t total)
{
    if (total == 0)
        return 0.0;
    return 100.0 * (double)covered / (double)total;
}

double roundHalfUp2(double percent)
{
    double scaled = percent * 100.0;
    double whole = std::trunc(scaled);
    if (scaled - whole >= 0.5)
        whole += 1.0;
    return whole / 100.0;
}
