/* table_sort.h -- the sort of the report's tables (files and functions).
 *
 * Fewer than 32 entries are sorted by an exchange sort: for each slot i every
 * later entry j is compared with the entry in slot i and the two are swapped
 * when j belongs before it. Longer tables are quicksorted on index ranges
 * with the middle entry of the range as the pivot, down to single entries,
 * falling back to a heap sort where the pivots keep missing. Entries equal
 * in every key may end in any order.
 */
#ifndef VEMCOV_REPORT_TABLE_SORT_H
#define VEMCOV_REPORT_TABLE_SORT_H

#include <algorithm>
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
 * the depth stays logarithmic. A range that still needs splitting after
 * `depthBudget` partitions (keys laid out against the middle pivot) is
 * heap-sorted instead, so no table costs more than n log n; only entries
 * equal in every key can come out otherwise than the quicksort would put
 * them. */
template <class T, class Before>
void quickSortTable(T *items, int low, int high, Before before, int depthBudget)
{
    while (low < high) {
        if (depthBudget-- == 0) {
            std::make_heap(items + low, items + high + 1, before);
            std::sort_heap(items + low, items + high + 1, before);
            return;
        }
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
            quickSortTable(items, low, j, before, depthBudget);
            low = i;
        } else {
            quickSortTable(items, i, high, before, depthBudget);
            high = j;
        }
    }
}

/* The quicksort of items[low..high] with the budget of twice the binary
 * logarithm of its length: ample for every ordinary table. */
template <class T, class Before>
void quickSortTable(T *items, int low, int high, Before before)
{
    int depthBudget = 0;
    for (int length = high - low + 1; length > 1; length >>= 1)
        depthBudget += 2;
    quickSortTable(items, low, high, before, depthBudget);
}

/* -1, 0 or 1 as `a` is below, equal to or above `b`: one key of a table's
 * comparison. */
template <class T>
int compareKey(T a, T b)
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

#endif
