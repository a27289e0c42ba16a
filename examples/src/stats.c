/* stats.c -- small statistics over an array of ints. */
#include "stats.h"

int mean(const int *values, int n)
{
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += values[i];
    if (n == 0)
        return 0; /* NOT_FEASIBLE: callers never pass an empty array */
    return sum / n;
}

int maximum(const int *values, int n)
{
    int best = values[0];
    for (int i = 1; i < n; ++i)
        if (values[i] > best)
            best = values[i];
    return best;
}

int minimum(const int *values, int n)
{
    int best = values[0];
    for (int i = 1; i < n; ++i)
        if (values[i] < best)
            best = values[i];
    return best;
}
