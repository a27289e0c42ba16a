/* call_graph.cpp -- building the dynamic call graph from the static profile's
 * lines and the dynamic profile's segments. */
#include "shared/vemtra/client/call_graph.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/client/spi_reader.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/tool_message.h"

/* Messages of the build. */
static const char MSG_NO_DPI[] = "couldn't open dpi file '%s'";
static const char MSG_NO_SPI[] = "couldn't open spi file '%s'";
static const char MSG_BAD_HEADER[] = "corrupt spi file '%s', header on line %d";
static const char MSG_BAD_CALL[] = "corrupt spi file '%s', line %d";

static const char NAME_INDIRECT[] = "(indirect)";  /* an indirect call site */
static const char MARK_EXTERNAL[] = "(E)";         /* an external callee's name ends here */
static const char MARK_IGNORED[] = "(G)";          /* version 4: a callee to leave out */

entry *VEMTRA_first_entry = nullptr;
uint32_t VEMTRA_entry_count = 0;

/* One member of a bucket's chain: the node and a 64-bit fingerprint of its
 * key. The sum-and-xor hash spreads similar names poorly, so chains grow
 * long; the members sit side by side and the fingerprint spares the string
 * comparison for all but the equal key. */
typedef struct vemtra_entry_slot {
    uint64_t fingerprint;
    entry *node;
} vemtra_entry_slot;

typedef struct vemtra_entry_bucket {
    vemtra_entry_slot *slots;
    uint32_t count;
    uint32_t capacity;
} vemtra_entry_bucket;

static entry *last_entry = nullptr;                          /* tail of the creation list */
static vemtra_entry_bucket entry_table[VEMTRA_ADDRESS_BUCKETS]; /* the first node of each key */

uint32_t vemtra_Entry_Key_Hash(const char *key)
{
    int32_t sum = 0;
    int32_t bits = 0;
    uint32_t length = 0;
    for (const char *p = key; *p != '\0'; p++) {
        signed char c = static_cast<signed char>(*p);
        sum += c;
        bits ^= c;
        length++;
    }
    return ((static_cast<uint32_t>(sum) & 0x7FFFu) << 16) | ((static_cast<uint32_t>(bits) & 0xFFu) << 8) |
           (length & 0xFFu);
}

/* FNV-1a over the key: the fingerprint of a chain member. */
static uint64_t vemtra_Entry_Key_Fingerprint(const char *key)
{
    uint64_t value = 14695981039346656037ull;
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(key); *p != '\0'; p++)
        value = (value ^ *p) * 1099511628211ull;
    return value;
}

static void vemtra_Bucket_Add(vemtra_entry_bucket *bucket, uint64_t fingerprint, entry *node)
{
    if (bucket->count == bucket->capacity) {
        bucket->capacity = bucket->capacity == 0 ? 8 : bucket->capacity * 2;
        bucket->slots = static_cast<vemtra_entry_slot *>(
            VEMTRA_Realloc(bucket->slots, bucket->capacity * sizeof(vemtra_entry_slot)));
    }
    bucket->slots[bucket->count].fingerprint = fingerprint;
    bucket->slots[bucket->count].node = node;
    bucket->count++;
}

/* The chain's node whose key equals `key`, or null. */
static entry *vemtra_Bucket_Find(const vemtra_entry_bucket *bucket, uint64_t fingerprint, const char *key)
{
    for (uint32_t i = 0; i < bucket->count; i++)
        if (bucket->slots[i].fingerprint == fingerprint && strcmp(bucket->slots[i].node->key, key) == 0)
            return bucket->slots[i].node;
    return nullptr;
}

/* The key of a node: "module name" for a static function, "name" alone for
 * an external one. A fresh allocation. */
static char *vemtra_Entry_Key(const char *module, const char *name, int is_static)
{
    if (!is_static)
        return VEMTRA_Strdup(name);
    size_t module_len = strlen(module);
    size_t name_len = strlen(name);
    char *key = static_cast<char *>(VEMTRA_Malloc(module_len + 1 + name_len + 1));
    memcpy(key, module, module_len);
    key[module_len] = ' ';
    memcpy(key + module_len + 1, name, name_len + 1);
    return key;
}

/* Records a definition in `node`; the module is replaced by a copy of
 * `module`. */
static void vemtra_Entry_Define(entry *node, const char *module, int32_t line, float frequency, int is_static,
                                int flag2, uint32_t word_b)
{
    free(node->module);
    node->module = VEMTRA_Strdup(module);
    node->line = line;
    node->frequency = frequency;
    node->flags = VEMTRA_ENTRY_DEFINED | (is_static ? VEMTRA_ENTRY_STATIC : 0u) | (flag2 ? VEMTRA_ENTRY_FLAG2 : 0u);
    node->word_b = word_b;
}

/* A new node with the next creation number, appended to the creation list.
 * The key is taken over. */
static entry *vemtra_Entry_Create(char *key, uint32_t key_hash, const char *name)
{
    entry *node = static_cast<entry *>(VEMTRA_Calloc(1, sizeof(entry)));
    node->name = VEMTRA_Strdup(name);
    node->line = -1;
    node->frequency = 0.0f;
    node->number = VEMTRA_entry_count++;
    node->key = key;
    node->key_hash = key_hash;
    if (last_entry == nullptr)
        VEMTRA_first_entry = node;
    else
        last_entry->next = node;
    last_entry = node;
    return node;
}

entry *vemtra_Entry_Chain_Last(entry *node)
{
    while (node->next_same_key != nullptr)
        node = node->next_same_key;
    return node;
}

/* Moves the out-list and the in-list of `from` to `to` (whose lists are
 * empty), so that the edges hang on the chain's new last node. */
static void vemtra_Entry_Move_Edges(entry *from, entry *to)
{
    to->out_edges = from->out_edges;
    to->in_edges = from->in_edges;
    from->out_edges = nullptr;
    from->in_edges = nullptr;
    for (VEMTRA_CALL_EDGE *edge = to->out_edges; edge != nullptr; edge = edge->next_out)
        edge->caller = to;
    for (VEMTRA_CALL_LINK *link = to->in_edges; link != nullptr; link = link->next)
        link->edge->callee = to;
}

entry *entry_lookup(const char *module, const char *name, int32_t line, float frequency, int define,
                    int is_static, int flag2, uint32_t word_b, int *duplicate_out)
{
    /* 1. The key and its bucket. */
    *duplicate_out = 0;
    char *key = vemtra_Entry_Key(module, name, is_static);
    uint32_t key_hash = vemtra_Entry_Key_Hash(key);
    uint64_t fingerprint = vemtra_Entry_Key_Fingerprint(key);
    vemtra_entry_bucket *bucket = &entry_table[key_hash % VEMTRA_ADDRESS_BUCKETS];
    entry *node = vemtra_Bucket_Find(bucket, fingerprint, key);

    /* 2. A new function. */
    if (node == nullptr) {
        node = vemtra_Entry_Create(key, key_hash, name);
        if (define)
            vemtra_Entry_Define(node, module, line, frequency, is_static, flag2, word_b);
        else if (is_static)
            node->module = VEMTRA_Strdup(module);
        vemtra_Bucket_Add(bucket, fingerprint, node);
        return node;
    }
    free(key);

    /* 3 and 4. A mention, or the first definition of a mentioned function. */
    if (!(node->flags & VEMTRA_ENTRY_DEFINED)) {
        if (define)
            vemtra_Entry_Define(node, module, line, frequency, is_static, flag2, word_b);
        return node;
    }
    if (!define)
        return node;

    /* 5. A second definition: in the same file it is a duplicate line; in
     * another file it is another function of the same name. */
    if (strcmp(node->module, module) == 0) {
        *duplicate_out = 1;
        return node;
    }
    entry *last = vemtra_Entry_Chain_Last(node);
    entry *other = vemtra_Entry_Create(VEMTRA_Strdup(node->key), node->key_hash, name);
    vemtra_Entry_Define(other, module, line, frequency, is_static, flag2, word_b);
    last->next_same_key = other;
    vemtra_Entry_Move_Edges(last, other);
    return node;
}

/* An edge from `caller` to `callee`, at the front of both lists. */
static void vemtra_Add_Edge(entry *caller, entry *callee, uint32_t site, float frequency)
{
    VEMTRA_CALL_EDGE *edge = static_cast<VEMTRA_CALL_EDGE *>(VEMTRA_Malloc(sizeof(VEMTRA_CALL_EDGE)));
    edge->caller = caller;
    edge->callee = callee;
    edge->site = site;
    edge->frequency = frequency;
    edge->next_out = caller->out_edges;
    caller->out_edges = edge;
    VEMTRA_CALL_LINK *link = static_cast<VEMTRA_CALL_LINK *>(VEMTRA_Malloc(sizeof(VEMTRA_CALL_LINK)));
    link->edge = edge;
    link->next = callee->in_edges;
    callee->in_edges = link;
}

void VEMTRA_Free_Call_Graph(void)
{
    entry *node = VEMTRA_first_entry;
    while (node != nullptr) {
        entry *next = node->next;
        VEMTRA_CALL_EDGE *edge = node->out_edges;
        while (edge != nullptr) {
            VEMTRA_CALL_EDGE *next_edge = edge->next_out;
            free(edge);
            edge = next_edge;
        }
        VEMTRA_CALL_LINK *link = node->in_edges;
        while (link != nullptr) {
            VEMTRA_CALL_LINK *next_link = link->next;
            free(link);
            link = next_link;
        }
        free(node->module);
        free(node->name);
        free(node->key);
        free(node);
        node = next;
    }
    VEMTRA_first_entry = nullptr;
    last_entry = nullptr;
    VEMTRA_entry_count = 0;
    for (vemtra_entry_bucket &bucket : entry_table) {
        free(bucket.slots);
        bucket = vemtra_entry_bucket{};
    }
}

/* ---- the call-site list of one line ---- */

/* Skips blanks up to the end of the line; returns the next character, left
 * unread (EOF at the end of the file). */
static int vemtra_Skip_Blanks(FILE *stream)
{
    int c = getc(stream);
    while (c != EOF && c != '\n' && isspace(c))
        c = getc(stream);
    if (c != EOF)
        ungetc(c, stream);
    return c;
}

/* Reads a decimal int (optional sign) at the stream position. Returns 1, or
 * 0 when there is none or it does not fit an int. */
static int vemtra_Read_Int(FILE *stream, int *value)
{
    int c = getc(stream);
    int negative = 0;
    if (c == '-' || c == '+') {
        negative = c == '-';
        c = getc(stream);
    }
    if (c == EOF || !isdigit(c)) {
        if (c != EOF)
            ungetc(c, stream);
        return 0;
    }
    int64_t magnitude = 0;
    while (c != EOF && isdigit(c)) {
        magnitude = magnitude * 10 + (c - '0');
        if (magnitude > int64_t(INT32_MAX) + 1)
            return 0;
        c = getc(stream);
    }
    if (c != EOF)
        ungetc(c, stream);
    int64_t signed_value = negative ? -magnitude : magnitude;
    if (signed_value > INT32_MAX)
        return 0;
    *value = static_cast<int>(signed_value);
    return 1;
}

/* Reads one call-site entry: block index, site number and a callee name of
 * any length, all on the current line. Returns 1, or 0 when it is malformed. */
static int vemtra_Read_Call_Site(FILE *stream, int *block, int *site, std::string *callee)
{
    if (!vemtra_Read_Int(stream, block))
        return 0;
    int c = vemtra_Skip_Blanks(stream);
    if (c == EOF || c == '\n' || !vemtra_Read_Int(stream, site))
        return 0;
    c = vemtra_Skip_Blanks(stream);
    if (c == EOF || c == '\n')
        return 0;
    callee->clear();
    for (c = getc(stream); c != EOF && !isspace(c); c = getc(stream))
        callee->push_back(static_cast<char>(c));
    if (c != EOF)
        ungetc(c, stream);
    return 1;
}

/* Executions per run of the segment's block `index`; 0 without a segment or
 * for an index outside the block array. */
static float vemtra_Block_Frequency(const DPI_SEGMENT *handle, int64_t index)
{
    if (handle == nullptr || index < 0 || index >= handle->segment->block_cnt)
        return 0.0f;
    return static_cast<float>(static_cast<double>(handle->segment->blocks[index].count) /
                              static_cast<double>(handle->runs));
}

/* The function's own frequency: the block of the last entry named like the
 * routine, per run; 0 when no entry has its name. */
static float vemtra_Function_Frequency(const DPI_SEGMENT *handle, const char *routine_name)
{
    const DPI_S *segment = handle->segment;
    int64_t index = -1;
    for (uint32_t e = 0; e < segment->entry_cnt; e++)
        if (segment->entries[e].name != nullptr && strcmp(segment->entries[e].name, routine_name) == 0)
            index = segment->entry_index[e];
    return index < 0 ? 0.0f : vemtra_Block_Frequency(handle, index);
}

/* Reads the call sites of the line after the header and adds an edge for
 * each direct call. `caller` is the line's node; `skip_all` is set for a
 * duplicate definition, whose call sites are read and left out. */
static void vemtra_Read_Call_Sites(FILE *stream, const char *spi_file_name, int line_number,
                                   const SPI_LINE_HEADER_S *header, entry *caller, int skip_all,
                                   const DPI_SEGMENT *handle)
{
    std::string callee;
    for (;;) {
        int c = vemtra_Skip_Blanks(stream);
        if (c == EOF)
            return;
        if (c == '\n') {
            getc(stream);
            return;
        }
        int block = 0, site = 0;
        if (!vemtra_Read_Call_Site(stream, &block, &site, &callee))
            VEMTRA_Tool_Error(1, MSG_BAD_CALL, spi_file_name, line_number);

        if (header->version == 4 && callee.compare(0, strlen(MARK_IGNORED), MARK_IGNORED) == 0)
            continue;
        if (skip_all)
            continue;
        float frequency = vemtra_Block_Frequency(handle, block);
        int is_static = 1;
        size_t external = callee.find(MARK_EXTERNAL);
        if (external != std::string::npos) {
            callee.resize(external);
            is_static = 0;
        }
        if (callee == NAME_INDIRECT)
            continue;
        int duplicate = 0;
        entry *target = entry_lookup(header->full_path_name, callee.c_str(), 0, 0.0f, 0, is_static, 0, 0,
                                     &duplicate);
        vemtra_Add_Edge(vemtra_Entry_Chain_Last(caller), vemtra_Entry_Chain_Last(target),
                        static_cast<uint32_t>(site), frequency);
    }
}

void VEMTRA_Create_Call_Graph(const char *dpi_file_name, const char *spi_file_name, int *any_flag0_out,
                              DPI_FILE *dpi_file)
{
    /* 1. The node table and the dynamic profile. */
    VEMTRA_Free_Call_Graph();
    *any_flag0_out = 0;
    int opened_here = dpi_file == nullptr;
    if (opened_here) {
        dpi_file = VEMTRA_Open_Dpi_File(dpi_file_name);
        if (dpi_file == nullptr)
            VEMTRA_Tool_Error(1, MSG_NO_DPI, dpi_file_name);
    }

    /* 2. The static profile. */
    FILE *spi = checked_fopen(spi_file_name, "r");
    if (spi == nullptr) {
        if (opened_here)
            VEMTRA_Tool_Error(1, MSG_NO_SPI, spi_file_name);
        return;
    }

    /* 3. One line per function. A corrupt line ends the run; where such an
     * exit returns to the caller instead (a build that turns documented
     * exits into a return), the guard closes the file. */
    struct spi_guard {
        FILE *file;
        ~spi_guard()
        {
            if (file != nullptr)
                checked_fclose(file);
        }
    } guard = {spi};
    int c = getc(spi);
    int line_number = 0;
    while (c != EOF) {
        ungetc(c, spi);
        line_number++;
        SPI_LINE_HEADER_S header;
        if (!VEMTRA_SPI_Read_Line_Header(spi, spi_file_name, &header, 1))
            VEMTRA_Tool_Error(1, MSG_BAD_HEADER, spi_file_name, line_number);

        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi_file, dpi_file_name, header.full_path_name,
                                                 header.routine_name);
        float frequency = 0.0f;
        int flag2 = 0;
        uint32_t word_b = 0;
        if (handle != nullptr) {
            if (handle->segment->flags & VEMTRA_SEG_FLAG0)
                *any_flag0_out = 1;
            frequency = vemtra_Function_Frequency(handle, header.routine_name);
            flag2 = (handle->segment->word_c >> 1) & 1u;
            word_b = handle->segment->word_b;
        }

        int duplicate = 0;
        entry *caller = entry_lookup(header.full_path_name, header.routine_name, static_cast<int32_t>(header.line),
                                     frequency, 1, header.linkage != 'E', flag2, word_b, &duplicate);
        vemtra_Read_Call_Sites(spi, spi_file_name, line_number, &header, caller, duplicate, handle);
        VEMTRA_Free_Segment(handle);
        c = getc(spi);
    }

    /* 4. */
    guard.file = nullptr;
    checked_fclose(spi);
}
