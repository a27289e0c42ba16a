/* dpi_segment.cpp -- fetching one function's segment by file and function
 * name, and releasing it. */
#include "shared/vemtra/client/dpi_segment.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_record.h"
#include "shared/vemtra/client/dpi_stream.h"
#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"

/* Notes the entry found, and asks memory for the record of the entry after
 * it, the likely next fetch: the record is then at hand when it comes. */
static void vemtra_Found_Entry(DPI_FILE *dpi_file, uint32_t found)
{
    dpi_file->last_found = found;
    if (found + 1 < dpi_file->segment_count)
        vemtra_Dpi_Stream_Prefetch(dpi_file->stream, dpi_file->directory[found + 1].segment_offset);
}

/* The directory entry whose key equals `key`, or null. Functions are
 * usually fetched in about the directory's order, so the entry after the
 * last one found is tried first: when its key is the one sought and no
 * other entry has it, the search would find it too. Otherwise the
 * directory is searched by halves (which, among entries of one key, finds
 * the one it always found). */
static const DPI_DIRECTORY_ENTRY *vemtra_Find_Entry(DPI_FILE *dpi_file, const char *key)
{
    uint32_t next = dpi_file->last_found + 1;
    if (next < dpi_file->segment_count && !dpi_file->directory[next].shared_key &&
        strcmp(dpi_file->directory[next].lookup_key, key) == 0) {
        vemtra_Found_Entry(dpi_file, next);
        return &dpi_file->directory[next];
    }
    uint32_t low = 0, high = dpi_file->segment_count;
    while (low < high) {
        uint32_t middle = low + (high - low) / 2;
        int order = strcmp(dpi_file->directory[middle].lookup_key, key);
        if (order == 0) {
            vemtra_Found_Entry(dpi_file, middle);
            return &dpi_file->directory[middle];
        }
        if (order < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return nullptr;
}

/* A fetched segment is one allocation: the handle first (so that its
 * address is the allocation's), then the record and all it points to. */
static const size_t HANDLE_ROOM = (sizeof(DPI_SEGMENT) + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) *
                                  alignof(std::max_align_t);

DPI_SEGMENT *VEMTRA_Get_Segment(DPI_FILE *dpi_file, const char *dpi_file_name, const char *file_name,
                                const char *function_name)
{
    /* 1 and 2. The key, formed from the name as the directory formed it. */
    const char *key = vemtra_Lookup_Key_Scratch(
        VEMTRA_expand_symbolic_links ? vemtra_Physical_File_Name(file_name) : file_name, function_name);

    /* 3 and 4. The entry. */
    const DPI_DIRECTORY_ENTRY *entry = vemtra_Find_Entry(dpi_file, key);
    if (entry == nullptr)
        return nullptr;

    /* 5. The decoded record, in the layout the open settled on, in one
     * allocation with its handle. */
    vemtra_Dpi_Stream_Set_Name(dpi_file->stream, dpi_file_name);
    vemtra_Dpi_Stream_Seek(dpi_file->stream, entry->segment_offset);
    int wide = VEMTRA_dpi_64bit_counters;
    DPI_S *record = nullptr;
    DPI_SEGMENT *handle = static_cast<DPI_SEGMENT *>(vemtra_Read_Dpi_Segment(
        dpi_file->stream, wide, wide ? entry->src_root_offset : 0, dpi_file_name, HANDLE_ROOM, &record));
    handle->runs = dpi_file->runs;
    handle->segment = record;
    return handle;
}

void VEMTRA_Free_Segment(DPI_SEGMENT *handle)
{
    if (handle == nullptr)
        return;
    free(handle);
}
