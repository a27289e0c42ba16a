/* main.c -- prints a few statistics of a fixed data set. */
#include <stdio.h>
#include "stats.h"

int main(int argc, char **argv)
{
    int values[] = {4, 8, 15, 16, 23, 42};
    int n = 6;
    if (argc > 1) {
        printf("usage: %s\n", argv[0]);
        return 1;
    }
    printf("mean %d\n", mean(values, n));
    printf("max %d\n", maximum(values, n));
    return 0;
}
