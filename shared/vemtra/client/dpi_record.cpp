/* dpi_record.cpp -- one segment record, in either layout, field by field. */
#include "shared/vemtra/client/dpi_record.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/assertx.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/tool_message.h"

static const uint64_t VALUE_TABLE_BYTES = VEMTRA_VALUE_TARGETS * VEMTRA_VALUE_RECORD_SIZE;
static const int VERSION2_OFFSET_BYTES = 44;

/* The fixed part of a record, before its arrays. */
struct vemtra_record_head {
    uint64_t flags;
    uint32_t word_a;
    uint32_t entry_cnt;
    uint32_t block_cnt;
    uint32_t other_cnt;
    uint32_t value_cnt;
    uint32_t word_b;
    uint64_t word_c;
    uint64_t file_offset;
    uint64_t function_offset;
    uint64_t function_address;
    uint64_t vtable_address;
    uint64_t vtable_offset;
};

/* Byte sizes of the arrays that follow the fixed part, in file order. */
struct vemtra_record_arrays {
    uint64_t counter_width;  /* 8 or 4 */
    uint64_t blocks;
    uint64_t other;
    uint64_t values;
    uint64_t value_tables;
    uint64_t entry_offsets;
    uint64_t entry_indexes;  /* with the padding of an odd count in version 3 */
    uint64_t lines;
};

static void vemtra_Read_Head(VEMTRA_DPI_STREAM *stream, int wide, vemtra_record_head *head)
{
    head->flags = wide ? vemtra_Dpi_Read_U64(stream) : vemtra_Dpi_Read_U32(stream);
    head->word_a = vemtra_Dpi_Read_U32(stream);
    head->entry_cnt = vemtra_Dpi_Read_U32(stream);
    head->block_cnt = vemtra_Dpi_Read_U32(stream);
    head->other_cnt = vemtra_Dpi_Read_U32(stream);
    head->value_cnt = vemtra_Dpi_Read_U32(stream);
    if (wide) {
        head->word_b = vemtra_Dpi_Read_U32(stream);
        head->word_c = vemtra_Dpi_Read_U64(stream);
        head->file_offset = vemtra_Dpi_Read_U64(stream);
        head->function_offset = vemtra_Dpi_Read_U64(stream);
        head->function_address = vemtra_Dpi_Read_U64(stream);
        head->vtable_address = vemtra_Dpi_Read_U64(stream);
        head->vtable_offset = vemtra_Dpi_Read_U64(stream);
        return;
    }
    head->word_c = vemtra_Dpi_Read_U32(stream);
    head->word_b = vemtra_Dpi_Read_U32(stream);
    /* The 44 bytes from the file-name offset on are composed in a fixed,
     * overlapping way: each name offset takes the 32-bit word at 8, 32 or
     * 40 as its high half. */
    unsigned char bytes[VERSION2_OFFSET_BYTES];
    vemtra_Dpi_Stream_Read(stream, bytes, sizeof bytes);
    uint64_t at0 = vemtra_Le_Value(bytes + 0, 4);
    uint64_t at8 = vemtra_Le_Value(bytes + 8, 4);
    uint64_t at32 = vemtra_Le_Value(bytes + 32, 4);
    uint64_t at40 = vemtra_Le_Value(bytes + 40, 4);
    head->file_offset = at0 | (at8 << 32);
    head->function_offset = at8 | (at32 << 32);
    head->function_address = vemtra_Le_Value(bytes + 16, 8);
    head->vtable_address = vemtra_Le_Value(bytes + 24, 8);
    head->vtable_offset = at32 | (at40 << 32);
}

static vemtra_record_arrays vemtra_Array_Sizes(const vemtra_record_head *head, int wide)
{
    vemtra_record_arrays sizes;
    uint64_t width = wide ? 8 : 4;
    sizes.counter_width = width;
    sizes.blocks = head->block_cnt * width;
    sizes.other = head->other_cnt * width;
    sizes.values = head->value_cnt * width;
    sizes.value_tables = head->value_cnt * VALUE_TABLE_BYTES;
    sizes.entry_offsets = head->entry_cnt * width;
    sizes.entry_indexes = head->entry_cnt * uint64_t(4) + ((wide && head->entry_cnt % 2 == 1) ? 4 : 0);
    sizes.lines = 0;
    if ((wide && (head->flags & VEMTRA_SEG_PACKED_LINES)) || (head->flags & VEMTRA_SEG_LINE_INFO))
        sizes.lines = head->block_cnt * uint64_t(8);
    return sizes;
}

static uint64_t vemtra_Read_Counter(VEMTRA_DPI_STREAM *stream, int wide)
{
    return wide ? vemtra_Dpi_Read_U64(stream) : vemtra_Dpi_Read_U32(stream);
}

/* The re-rooted length of `dpi->file_name` with its terminator, or 0 after
 * the warning when it would not fit. */
static size_t vemtra_Rerooted_Size(const DPI_S *dpi)
{
    ASSERTX(DPI_src_root(dpi) <= strlen(dpi->file_name));
    const char *rest = dpi->file_name + DPI_src_root(dpi);
    size_t needed = static_cast<size_t>(VEMTRA_src_root_dir_len) + strlen(rest) + 1;
    if (needed > VEMTRA_PATH_MAX) {
        VEMTRA_Tool_Warning("new name for %s is too long; src_root not used", dpi->file_name);
        return 0;
    }
    return needed;
}

/* Writes the re-rooted name into `name` (room for `needed` bytes). */
static void vemtra_Write_Rerooted(DPI_S *dpi, char *name)
{
    const char *rest = dpi->file_name + DPI_src_root(dpi);
    memcpy(name, VEMTRA_src_root_dir, static_cast<size_t>(VEMTRA_src_root_dir_len));
    memmove(name + VEMTRA_src_root_dir_len, rest, strlen(rest) + 1);
    dpi->file_name = name;
    dpi->src_root = static_cast<uint32_t>(VEMTRA_src_root_dir_len);
}

void vemtra_Apply_Dpi_Src_Root(DPI_S *dpi)
{
    size_t needed = vemtra_Rerooted_Size(dpi);
    if (needed == 0)
        return;
    char *old_name = dpi->file_name;
    vemtra_Write_Rerooted(dpi, static_cast<char *>(VEMTRA_Malloc(needed)));
    free(old_name);
}

/* Hands out the pieces of one allocation in order, each aligned for any
 * type; sized first by a dry run over the same requests. */
struct vemtra_record_space {
    static const size_t ALIGN = alignof(std::max_align_t);
    char *base = nullptr;
    size_t used = 0;

    void *take(size_t bytes)
    {
        size_t at = (used + ALIGN - 1) / ALIGN * ALIGN;
        used = at + bytes;
        return base != nullptr ? base + at : nullptr;
    }
    char *copy(const char *text)
    {
        size_t bytes = strlen(text) + 1;
        char *to = static_cast<char *>(take(bytes));
        if (to != nullptr)
            memcpy(to, text, bytes);
        return to;
    }
};

/* Frees the allocation when a documented exit unwinds the decode instead of
 * ending the process (a build that returns such exits to its caller). */
struct vemtra_record_guard {
    void *block;
    ~vemtra_record_guard() { free(block); }
};

/* Lays out the record, its arrays and its names in `space` (a dry run when
 * it has no base), reading the names and the entries' name offsets straight
 * from the stream's bytes; the arrays are filled later. `*reroot_room`
 * is room for the re-rooted file name when `rerooted`. */
static DPI_S *vemtra_Lay_Out_Record(vemtra_record_space *space, size_t prefix, const VEMTRA_DPI_STREAM *stream,
                                    const vemtra_record_head &head, const vemtra_record_arrays &sizes,
                                    int64_t arrays_at, int wide, bool rerooted, char **reroot_room)
{
    space->take(prefix);
    DPI_S *segment = static_cast<DPI_S *>(space->take(sizeof(DPI_S)));
    if (segment != nullptr)
        memset(segment, 0, sizeof *segment);
    const char *file_name = vemtra_Dpi_String(stream, head.file_offset);
    DPI_BLOCK *blocks = head.block_cnt > 0 ? static_cast<DPI_BLOCK *>(space->take(head.block_cnt * sizeof(DPI_BLOCK))) : nullptr;
    if (blocks != nullptr) /* a record without line information leaves the positions 0 */
        memset(blocks, 0, head.block_cnt * sizeof(DPI_BLOCK));
    uint64_t *other = head.other_cnt > 0 ? static_cast<uint64_t *>(space->take(head.other_cnt * sizeof(uint64_t))) : nullptr;
    uint64_t *values = head.value_cnt > 0 ? static_cast<uint64_t *>(space->take(head.value_cnt * sizeof(uint64_t))) : nullptr;
    unsigned char **tables = nullptr;
    if (head.value_cnt > 0) {
        tables = static_cast<unsigned char **>(space->take(head.value_cnt * sizeof(unsigned char *)));
        for (uint32_t k = 0; k < head.value_cnt; k++) {
            unsigned char *table = static_cast<unsigned char *>(space->take(VALUE_TABLE_BYTES));
            if (tables != nullptr)
                tables[k] = table;
        }
    }
    DPI_ENTRY *entries = nullptr;
    uint32_t *entry_index = nullptr;
    if (head.entry_cnt > 0) {
        entries = static_cast<DPI_ENTRY *>(space->take(head.entry_cnt * sizeof(DPI_ENTRY)));
        entry_index = static_cast<uint32_t *>(space->take(head.entry_cnt * sizeof(uint32_t)));
        const unsigned char *offsets = stream->image + arrays_at + sizes.blocks + sizes.other + sizes.values +
                                       sizes.value_tables;
        for (uint32_t e = 0; e < head.entry_cnt; e++) {
            uint64_t offset = vemtra_Le_Value(offsets + e * sizes.counter_width, wide ? 8 : 4);
            char *name = space->copy(vemtra_Dpi_String(stream, offset));
            if (entries != nullptr) {
                entries[e].name_offset = offset;
                entries[e].name = name;
            }
        }
    }
    char *file = space->copy(file_name);
    char *function = space->copy(vemtra_Dpi_String(stream, head.function_offset));
    char *vtable = space->copy(vemtra_Dpi_String(stream, head.vtable_offset));
    /* Room for the re-rooted file name: the root and the whole name. */
    *reroot_room = rerooted ? static_cast<char *>(space->take(static_cast<size_t>(VEMTRA_src_root_dir_len) +
                                                               strlen(file_name) + 1))
                            : nullptr;
    if (segment == nullptr)
        return nullptr;
    segment->file_name = file;
    segment->function_name = function;
    segment->vtable_name = vtable;
    segment->blocks = blocks;
    segment->other = other;
    segment->values = values;
    segment->value_tables = tables;
    segment->entries = entries;
    segment->entry_index = entry_index;
    return segment;
}

static void vemtra_Read_Counters_Into(uint64_t *counters, VEMTRA_DPI_STREAM *stream, uint32_t count, int wide)
{
    for (uint32_t i = 0; i < count; i++)
        counters[i] = vemtra_Read_Counter(stream, wide);
}

void *vemtra_Read_Dpi_Segment(VEMTRA_DPI_STREAM *stream, int wide, uint64_t src_root_offset, const char *file_name,
                              size_t prefix, DPI_S **record)
{
    vemtra_Dpi_Stream_Set_Name(stream, file_name);
    vemtra_record_head head;
    vemtra_Read_Head(stream, wide, &head);
    vemtra_record_arrays sizes = vemtra_Array_Sizes(&head, wide);
    /* The whole record must be there before anything is made for it. */
    vemtra_Dpi_Stream_Need(stream, sizes.blocks + sizes.other + sizes.values + sizes.value_tables +
                                       sizes.entry_offsets + sizes.entry_indexes + sizes.lines);
    int64_t arrays_at = vemtra_Dpi_Stream_Tell(stream);

    /* One allocation for the record and all it points to. */
    vemtra_record_space space;
    char *reroot_room = nullptr;
    vemtra_Lay_Out_Record(&space, prefix, stream, head, sizes, arrays_at, wide, src_root_offset != 0, &reroot_room);
    vemtra_record_guard guard = {VEMTRA_Malloc(space.used)};
    space = vemtra_record_space{static_cast<char *>(guard.block), 0};
    DPI_S *segment = vemtra_Lay_Out_Record(&space, prefix, stream, head, sizes, arrays_at, wide,
                                           src_root_offset != 0, &reroot_room);

    segment->flags = head.flags;
    segment->word_a = head.word_a;
    segment->entry_cnt = head.entry_cnt;
    segment->block_cnt = head.block_cnt;
    segment->other_cnt = head.other_cnt;
    segment->value_cnt = head.value_cnt;
    segment->word_b = head.word_b;
    segment->word_c = head.word_c;
    segment->function_address = head.function_address;
    segment->vtable_address = head.vtable_address;
    segment->graph = nullptr;

    /* Block counters first; their positions come with the line data. */
    for (uint32_t i = 0; i < head.block_cnt; i++)
        segment->blocks[i].count = vemtra_Read_Counter(stream, wide);
    vemtra_Read_Counters_Into(segment->other, stream, head.other_cnt, wide);
    vemtra_Read_Counters_Into(segment->values, stream, head.value_cnt, wide);
    for (uint32_t k = 0; k < head.value_cnt; k++)
        vemtra_Dpi_Stream_Read(stream, segment->value_tables[k], VALUE_TABLE_BYTES);
    if (head.entry_cnt > 0) {
        vemtra_Dpi_Stream_Skip(stream, sizes.entry_offsets); /* the names were taken while laying out */
        for (uint32_t e = 0; e < head.entry_cnt; e++)
            segment->entry_index[e] = vemtra_Dpi_Read_U32(stream);
        if (wide && head.entry_cnt % 2 == 1)
            vemtra_Dpi_Stream_Skip(stream, 4);
    }

    /* Line and column of every block: packed start/end ranges (column in the
     * low 10 bits) in version 3, else (line, column) pairs. */
    if (sizes.lines > 0) {
        int packed = wide && (head.flags & VEMTRA_SEG_PACKED_LINES);
        for (uint32_t i = 0; i < head.block_cnt; i++) {
            uint32_t first = vemtra_Dpi_Read_U32(stream);
            uint32_t second = vemtra_Dpi_Read_U32(stream);
            DPI_BLOCK *block = &segment->blocks[i];
            if (packed) {
                block->start_line = first >> 10;
                block->start_col = first & 0x3FF;
                block->end_line = second >> 10;
                block->end_col = second & 0x3FF;
            } else {
                block->start_line = first;
                block->start_col = second;
            }
        }
    }

    if (src_root_offset != 0) {
        vemtra_Dpi_Stream_Seek(stream, src_root_offset);
        segment->src_root = vemtra_Dpi_Read_U32(stream);
        if (vemtra_Rerooted_Size(segment) != 0)
            vemtra_Write_Rerooted(segment, reroot_room);
    }
    *record = segment;
    void *block = guard.block;
    guard.block = nullptr;
    return block;
}

void vemtra_Read_Dpi_Summary(VEMTRA_RECORD_SUMMARY *summary, VEMTRA_DPI_STREAM *stream, int wide)
{
    vemtra_record_head head;
    vemtra_Read_Head(stream, wide, &head);
    vemtra_record_arrays sizes = vemtra_Array_Sizes(&head, wide);
    int64_t blocks_at = vemtra_Dpi_Stream_Tell(stream);
    int64_t indexes_at = blocks_at + static_cast<int64_t>(sizes.blocks + sizes.other + sizes.values +
                                                          sizes.value_tables + sizes.entry_offsets);
    /* The whole record must be there, as a full decode would read it. */
    vemtra_Dpi_Stream_Need(stream, sizes.blocks + sizes.other + sizes.values + sizes.value_tables +
                                       sizes.entry_offsets + sizes.entry_indexes + sizes.lines);

    summary->flags = head.flags;
    summary->word_b = head.word_b;
    summary->word_c = head.word_c;
    summary->function_address = head.function_address;
    summary->vtable_address = head.vtable_address;
    summary->max_entry_count = 0;
    for (uint32_t e = 0; e < head.entry_cnt; e++) {
        vemtra_Dpi_Stream_Seek(stream, static_cast<uint64_t>(indexes_at) + e * uint64_t(4));
        uint32_t index = vemtra_Dpi_Read_U32(stream);
        if (index >= head.block_cnt)
            continue; /* names no block of this record */
        vemtra_Dpi_Stream_Seek(stream, static_cast<uint64_t>(blocks_at) + index * sizes.counter_width);
        uint64_t count = vemtra_Read_Counter(stream, wide);
        if (count > summary->max_entry_count)
            summary->max_entry_count = count;
    }
    summary->file_name = vemtra_Dpi_String(stream, head.file_offset);
    summary->function_name = vemtra_Dpi_String(stream, head.function_offset);
    summary->vtable_name = head.vtable_address != 0 ? vemtra_Dpi_String(stream, head.vtable_offset) : nullptr;
}
