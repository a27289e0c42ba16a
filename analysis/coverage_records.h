/* coverage_records.h -- the records of the coverage analysis: one profiled
 * function of the static profile (COMP), one listed function of the current
 * module (func), and one block count for the full block files (blocks). */
#ifndef VEMCOV_ANALYSIS_COVERAGE_RECORDS_H
#define VEMCOV_ANALYSIS_COVERAGE_RECORDS_H

#include <cstdint>

/* One function entry of the static profile. All entries of one module are
 * adjacent in the list, which is sorted by file name. */
struct COMP {
    COMP *next;                 /* next entry of the whole list */
    COMP *next_by_line;         /* this module's chain in ascending line order */
    COMP *first_by_line;        /* head of that chain */
    int32_t line;               /* source line where the function begins */
    uint32_t block_count;       /* blocks per the static profile (minus excluded) */
    int32_t first_in_module;    /* 1 on the first entry of a module */
    int32_t dup_name;           /* 1: another instance of the same source function */
    int32_t spi_value;          /* linkage character ('E' external) */
    uint32_t file_rank;         /* fileName's place among the list's, for its sort */
    char *name;                 /* display name; may be procName itself */
    char *fileName;             /* the module's source file (module key) */
    char *procName;             /* name as recorded in the profile (lookup key) */
    uint8_t not_in_reference;   /* -ref: counts here but none in the reference */
};

/* One function of the current module as listed in the function tables. */
struct func {
    char *name;        /* display name (shared with the COMP) */
    char *procName;    /* profile name (shared with the COMP) */
    uint32_t line;     /* first line */
    uint32_t blocks;   /* feasible blocks */
    uint32_t covered;  /* feasible blocks with a positive count */
    double percent;    /* 100.0 * covered / blocks, 0.0 when blocks is 0 */
    /* The name's place among its table's names, from 1 (equal names share
     * one), so that the tables' several sorts compare names without reading
     * them; 0 until the report ranks them. */
    int32_t nameRank;
    /* The function's place among the rows a list of functions makes once
     * for all its pages; set by the report. */
    int32_t listRow;
};

/* One block's count for the full block files; an array of them is linked
 * into one list per function, ascending by (line, col). */
struct blocks {
    int32_t line;
    int32_t col;
    double freq;
    blocks *next;
};

#endif
