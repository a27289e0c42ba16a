/* vemtra_records.h -- the plain records shared by the profile library and
 * its clients: one static-profile header line, an open dynamic profile with
 * its directory, and one decoded function segment.
 *
 * All multi-byte values of the dynamic profile file are little-endian on
 * disk; the readers decode them byte by byte into these host records.
 */
#ifndef VEMTRA_TALLYFOLD_VEMTRA_RECORDS_H
#define VEMTRA_TALLYFOLD_VEMTRA_RECORDS_H

#include <cstdint>
#include <cstdio>

/* ---- dynamic profile file format constants ---- */
#define VEMTRA_DPI_MAGIC_NEW        0xDC12u  /* 64-bit magic of the new header form */
#define VEMTRA_DPI_MAGIC_OLD        0xDC0Bu  /* 32-bit magic of the old header form */
#define VEMTRA_DPI_HEADER_PROPS     0xDC0Cu  /* header version that adds a properties word */
#define TAG_SEGMENT_XDPI            0xDEEFu  /* tag of a function record */
#define VEMTRA_TAG_FLOW_GRAPH       0xFEEFu  /* flow-graph extension */
#define VEMTRA_TAG_SRC_ROOT         0xDA5Eu  /* source-root length extension */
#define VEMTRA_TAG_D1F0             0xD1F0u  /* recorded, not interpreted */
#define VEMTRA_TAG_DC6A             0xDC6Au  /* recorded, not interpreted */
#define VEMTRA_TAG_EXTENSION_BITS   0xD000u  /* unknown tags with these bits are skipped */
#define VEMTRA_DPI_OLD_HEADER_SIZE  528      /* bytes of the old header form */
#define VEMTRA_NAME_FIELD_SIZE      512      /* bytes of the header's name field */

/* segment record flags word */
#define VEMTRA_SEG_FLAG0            0x1u      /* reported to the call-graph builder */
#define VEMTRA_SEG_LINE_INFO        0x10u     /* (line, column) per block */
#define VEMTRA_SEG_COUNTERS_64      0x40u     /* 64-bit counters: version 3 layout */
#define VEMTRA_SEG_PACKED_LINES     0x20000u  /* packed start/end ranges */
#define VEMTRA_SEG_VERSION(flags)   (((flags) >> 8) & 0x7Fu)

#define VEMTRA_VALUE_TARGETS        4        /* target records per value-profile site */
#define VEMTRA_VALUE_RECORD_SIZE    24       /* bytes of one target record */
#define VEMTRA_ADDRESS_BUCKETS      991      /* buckets of the address and node tables */

/* ---- static profile: one function's header line ---- */
typedef struct SPI_LINE_HEADER_S {
    int32_t version;              /* number after "V"; 1 for an unversioned line */
    char *file_base_dir;          /* directory the file was compiled in, or "" */
    char *file_name;              /* source file name as the compiler saw it */
    char *full_path_name;         /* resolved (and possibly re-rooted) source path */
    char *module_base_dir;        /* directory of the module, or "" */
    char *module_name;            /* module (object) name */
    char *full_path_module;       /* resolved module path */
    char *routine_name;           /* the function's (mangled) name, '|' kept */
    uint32_t line;                /* first source line of the function */
    int32_t block_count;          /* first block count */
    int32_t excluded_block_count; /* second count, 0 when the line has none */
    char linkage;                 /* 'E' external, anything else static */
} SPI_LINE_HEADER_S;

/* ---- dynamic profile: one function's entry in the sorted directory ---- */
typedef struct DPI_DIRECTORY_ENTRY {
    /* The three names belong to the open file (its bytes, or strings it
     * made once for every entry that shares them); never freed one by one. */
    char *file_name;              /* source file, after source-root and link adjustment */
    char *function_name;          /* the function's name */
    char *lookup_key;             /* file name ' function name ' : the sort key */
    uint64_t segment_offset;      /* file offset of the segment record */
    uint64_t flow_graph_offset;   /* offset of the 0xFEEF payload, or 0 */
    uint64_t src_root_offset;     /* offset of the 0xDA5E payload, or 0 */
    uint64_t ext_d1f0_offset;     /* offset of the 0xD1F0 payload, or 0 */
    uint64_t ext_dc6a_offset;     /* offset of the 0xDC6A payload, or 0 */
    uint32_t segment_length;      /* payload length of the segment record */
    uint32_t flow_graph_length;   /* payload lengths of the four extensions */
    uint32_t src_root_length;
    uint32_t ext_d1f0_length;
    uint32_t ext_dc6a_length;
    uint32_t word_b;              /* word B of the segment record */
    uint32_t flags : 2;           /* bits 0 and 1 of the attribute word */
    uint32_t shared_key : 1;      /* another entry has the same lookup_key */
    float frequency;              /* greatest entry-block count / runs */
} DPI_DIRECTORY_ENTRY;

/* ---- an open dynamic profile file ---- */
struct VEMTRA_DPI_STREAM; /* positioned reads (client/dpi_stream.h) */
struct vemtra_string_pool; /* the directory's derived names (client/dpi_file.cpp) */

typedef struct DPI_FILE {
    FILE *fp;                        /* stays open (shared lock) for segment reads */
    uint32_t segment_count;          /* functions in the file (header) */
    uint32_t runs;                   /* program runs merged into the file (header) */
    uint32_t reserved;               /* reserved header word */
    uint32_t reserved2;              /* always zero */
    DPI_DIRECTORY_ENTRY *directory;  /* segment_count entries sorted by lookup_key */
    float max_frequency;             /* greatest frequency of all functions */
    uint64_t magic;                  /* VEMTRA_DPI_MAGIC_NEW or VEMTRA_DPI_MAGIC_OLD */
    char *name_field;                /* header name field (512-byte allocation) */
    int32_t has_flow_graph;          /* properties bit 0 */
    uint32_t cursor;                 /* position of the file/function pair walk */
    uint32_t last_found;             /* entry of the last successful lookup, or UINT32_MAX */
    struct VEMTRA_DPI_STREAM *stream; /* the file's bytes, read once */
    struct vemtra_string_pool *strings; /* owns the names the directory derived */
} DPI_FILE;

/* ---- one decoded function segment ---- */
typedef struct DPI_BLOCK {
    uint64_t count;       /* executions merged over all runs (32-bit counters widened) */
    uint32_t start_line;  /* 0 without line information */
    uint32_t start_col;
    uint32_t end_line;    /* 0 unless the packed form was used */
    uint32_t end_col;
} DPI_BLOCK;

typedef struct DPI_ENTRY {
    char *name;            /* entry (call target) name */
    uint64_t name_offset;  /* absolute file offset of that name */
} DPI_ENTRY;

typedef struct DPI_S {
    uint64_t flags;             /* record flags word (VEMTRA_SEG_*) */
    uint32_t word_a;            /* kept, not interpreted */
    uint32_t entry_cnt;         /* named entries */
    uint32_t block_cnt;         /* basic blocks */
    uint32_t other_cnt;         /* other counters */
    uint32_t value_cnt;         /* value-profile sites */
    uint32_t word_b;            /* kept, copied into the directory */
    uint64_t word_c;            /* attribute word: bits 0 and 1 are per-function flags */
    char *file_name;            /* source file (source-root adjusted) */
    char *function_name;        /* the function's name */
    uint64_t function_address;  /* code address, 0 if unknown */
    uint64_t vtable_address;    /* virtual table address, 0 if none */
    char *vtable_name;          /* that table's name */
    DPI_BLOCK *blocks;          /* block_cnt records, null when 0 */
    uint64_t *other;            /* other_cnt counters */
    uint64_t *values;           /* value_cnt values: per site, the index of the calling block */
    unsigned char **value_tables; /* value_cnt pointers to 4 x 24-byte target records */
    DPI_ENTRY *entries;         /* entry_cnt named entries */
    uint32_t *entry_index;      /* per entry, the index of its block */
    uint32_t src_root;          /* leading characters of file_name forming the source root */
    void *graph;                /* flow graph; never decoded by this tool, stays null */
} DPI_S;

/* What VEMTRA_Get_Segment hands out; released with VEMTRA_Free_Segment. */
typedef struct DPI_SEGMENT {
    DPI_S *segment;   /* the decoded record */
    uint32_t runs;    /* the file's number of runs at fetch time */
} DPI_SEGMENT;

/* Function-address table record (VEMTRA_Lookup_Func). */
typedef struct DPI_FUNC_INFO {
    char *function_name;  /* the directory's (valid while the profile is open) */
    char *file_name;      /* the directory's */
    uint32_t word_b;
    uint32_t flags;       /* the two attribute bits */
    float frequency;      /* as in the directory */
} DPI_FUNC_INFO;

/* Vtable-address table record (VEMTRA_Lookup_Vtbl). */
typedef struct DPI_VTBL_INFO {
    char *vtable_name;    /* the profile's bytes (valid while it is open) */
} DPI_VTBL_INFO;

#endif
