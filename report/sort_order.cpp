/* sort_order.cpp -- the header-link table and the checks of sort orders. */
#include "report/sort_order.h"

#include <cstdio>

#include "driver/console.h"

/* Row: the order in force + 3. Columns: name, coverage, blocks. A header
 * toggles its own key between ascending and descending and otherwise
 * switches to its key ascending; between descending coverage and descending
 * blocks the other header keeps the descending direction. */
static const int HEADER_LINKS[7][3] = {
    {4, 1, 6}, /* -3 */
    {4, 5, 0}, /* -2 */
    {4, 5, 6}, /* -1 */
    {4, 4, 4}, /*  0 */
    {2, 5, 6}, /*  1 */
    {4, 1, 6}, /*  2 */
    {4, 5, 0}, /*  3 */
};

int sortHeaderLink(SortType order, SortColumn column)
{
    checkSortOption(order);
    return HEADER_LINKS[order + 3][column];
}

bool isLinear(SortType order)
{
    if (order >= 0 && order <= 3)
        return true;
    if (order == 4)
        return false;
    fprintf(stderr, "ERROR: unknown sort type %d\n in isLinear", order);
    tvx_Exit(1);
}

void checkSortOption(SortType order)
{
    if (order < -3 || order > 3) {
        fprintf(stderr, "Invalid sorting option %d\n", order);
        tvx_Exit(1);
    }
}

void checkSortKeyOrder(SortType order)
{
    if (order == 0 || order < -3 || order > 3) {
        fprintf(stderr, "Internal error: invalid sort oder: %d\n", order);
        tvx_Exit(1);
    }
}
