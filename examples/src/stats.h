/* stats.h -- small statistics over an array of ints. */
#ifndef STATS_H
#define STATS_H

int mean(const int *values, int n);
int maximum(const int *values, int n);
int minimum(const int *values, int n);

#endif
