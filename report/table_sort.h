/* table_sort.h -- the sort of the report's tables (files and functions).
 *
 * Fewer than 32 entries are sorted by an exchange sort: for each slot i every
 * later entry j is compared with the entry in slot i and the two are swapped
 * when j belongs before it. Longer tables are quicksorted on index ranges
 * with the middle entry of the range as the pivot, down to single entries.
 * Entries equal in every key may end in any order.
 */
#ifndef VEMCOV_REPORT_TABLE_SORT_H
#define VEMCOV_REPORT_TABLE_SORT_H

#include <utility>

/* Tables of this many entries or more are quicksorted. */
const int TABLE_QUICKSORT_THRESHOLD = 32;

/* Exchange sort of items[0..count-1]; `before(a, b)` is true when a belongs
 * strictly before b. */
template <class T, class Before>
void exchangeSortTable(T *items, int count, Before before)
{
    for (int i = 0; i + 1 < count; ++i) {
        for (int j = i + 1; j < count; ++j) {
            if (before(items[j], items[i]))
                std::swap(items[i], items[j]);
        }
    }
}

/* Quicksort of items[low..high] with the pivot at the middle of the range.
 * The shorter part is sorted by recursion and the longer one by the loop, so
 * the depth stays logarithmic. */
template <class T, class Before>
void quickSortTable(T *items, int low, int high, Before before)
{
    while (low < high) {
        T pivot = items[low + (high - low) / 2];
        int i = low;
        int j = high;
        while (i <= j) {
            while (before(items[i], pivot))
                ++i;
            while (before(pivot, items[j]))
                --j;
            if (i <= j) {
                std::swap(items[i], items[j]);
                ++i;
                --j;
            }
        }
        if (j - low < high - i) {
            quickSortTable(items, low, j, before);
            low = i;
        } else {
            quickSortTable(items, i, high, before);
            high = j;
        }
    }
}

/* -1, 0 or 1 as `a` is below, equal to or above `b`: one key of a table's
 * comparison. */
template <class T>
int compareKey(T a, T b)
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

#endif
