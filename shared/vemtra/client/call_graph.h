/* call_graph.h -- the dynamic call graph: one node per instrumented function,
 * one edge per direct call site, weighted by executions per program run.
 *
 * Functions come from the static profile's header lines, their frequencies
 * from the dynamic profile's segments, and the edges from the call-site list
 * that follows each header on its line. Indirect calls are not edges.
 *
 * Nodes are found through a table of 991 buckets by their key: "module name"
 * for a static function, "name" alone for an external one. An external
 * function defined in several modules gets one node per module, chained by
 * next_same_key behind the first; edges always hang on the chain's last node.
 * The graph is process-wide and built once per run.
 */
#ifndef VEMTRA_CLIENT_CALL_GRAPH_H
#define VEMTRA_CLIENT_CALL_GRAPH_H

#include <cstdint>

#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Bits of entry::flags. */
#define VEMTRA_ENTRY_DEFINED 0x1u  /* the function's own header line was processed */
#define VEMTRA_ENTRY_STATIC  0x2u  /* static (file-local) linkage */
#define VEMTRA_ENTRY_FLAG2   0x4u  /* bit 1 of the segment's attribute word */

struct entry;

/* One direct call site and its callee. */
typedef struct VEMTRA_CALL_EDGE {
    struct entry *caller;              /* the calling function's node */
    struct entry *callee;              /* the called function's node */
    uint32_t site;                     /* call-site number of the static profile line */
    float frequency;                   /* executions of the calling block per run */
    struct VEMTRA_CALL_EDGE *next_out; /* next edge of the caller's out-list */
} VEMTRA_CALL_EDGE;

/* One element of a callee's in-list. */
typedef struct VEMTRA_CALL_LINK {
    VEMTRA_CALL_EDGE *edge;            /* the call */
    struct VEMTRA_CALL_LINK *next;     /* next link of the in-list */
} VEMTRA_CALL_LINK;

/* One function of the graph, created on its first mention as caller or
 * callee. */
typedef struct entry {
    char *module;                   /* source file; null for an external callee never defined */
    char *name;                     /* the function's name */
    int32_t line;                   /* first source line; -1 until defined */
    float frequency;                /* executions per run; 0 until defined */
    uint32_t flags;                 /* VEMTRA_ENTRY_* */
    uint32_t word_b;                /* word B of the function's segment */
    VEMTRA_CALL_EDGE *out_edges;    /* calls made, most recent first */
    VEMTRA_CALL_LINK *in_edges;     /* calls received, most recent first */
    struct entry *next_same_key;    /* next definition with this key in another module */
    struct entry *next;             /* next node in creation order */
    uint32_t number;                /* creation number, from 0 */
    char *key;                      /* lookup key ("module name" or "name") */
    uint32_t key_hash;              /* vemtra_Entry_Key_Hash of the key */
} entry;

/* First node in creation order (null before the build). */
extern entry *VEMTRA_first_entry;
/* Number of nodes created. */
extern uint32_t VEMTRA_entry_count;

/* The hash of a node key over its characters taken as signed bytes: with s
 * their sum, x their exclusive-or and n their number,
 * ((s & 0x7FFF) << 16) | ((x & 0xFF) << 8) | (n & 0xFF). The key's bucket is
 * the hash modulo 991. */
uint32_t vemtra_Entry_Key_Hash(const char *key);

/* Finds or creates the node of `name` (in `module` when `is_static`).
 * Clears *duplicate_out, then:
 *  - not found: creates the node (module copied only when `define` or
 *    `is_static`; the definition fields recorded when `define`);
 *  - found, not yet defined: records the definition when `define`;
 *  - found and defined, `define` clear: the node as it is;
 *  - found and defined, `define` set: in the node's own module, sets
 *    *duplicate_out to 1; in another module, appends a new node with this
 *    definition to the node's next_same_key chain and moves the edges of the
 *    chain's former last node onto it.
 * Returns the found node (the chain's first) or the new one. */
entry *entry_lookup(const char *module, const char *name, int32_t line, float frequency, int define,
                    int is_static, int flag2, uint32_t word_b, int *duplicate_out);

/* The last node of the next_same_key chain that starts at `node`. */
entry *vemtra_Entry_Chain_Last(entry *node);

/* Builds the graph from the static profile `spi_file_name` and the dynamic
 * profile `dpi_file` (opened here from `dpi_file_name` when null; failure:
 * "couldn't open dpi file '%s'", exit 1). Sets *any_flag0_out to 1 when some
 * function's segment has flag bit 0, else 0. A static profile that cannot be
 * opened ends the run ("couldn't open spi file '%s'") when the dynamic file
 * was opened here, and leaves the graph empty otherwise. A corrupt line ends
 * the run with "corrupt spi file '%s', header on line %d" or "corrupt spi
 * file '%s', line %d". */
void VEMTRA_Create_Call_Graph(const char *dpi_file_name, const char *spi_file_name, int *any_flag0_out,
                              DPI_FILE *dpi_file);

/* Frees every node, edge and link and empties the graph, so that a new one
 * can be built. */
void VEMTRA_Free_Call_Graph(void);

#endif
