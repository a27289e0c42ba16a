/* dpi_file.cpp -- opening a dynamic profile: its header, the sorted
 * directory of its segments, the walk over (file, function) pairs, and the
 * close.
 *
 * New-form files hold tagged blocks: a segment (tag 0xDEEF, length, record)
 * followed by extension blocks up to the next segment. Old-form files hold
 * untagged records whose word A is their length. The open reads every
 * record once, lightly, to fill the directory and the address tables; the
 * records are decoded fully only when fetched (dpi_segment.cpp).
 */
#include "shared/vemtra/client/dpi_file.h"

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "shared/vemtra/client/dpi_address_table.h"
#include "shared/vemtra/client/dpi_record.h"
#include "shared/vemtra/client/dpi_stream.h"
#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/assertx.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/tool_message.h"

int32_t VEMTRA_dpi_64bit_counters = 0;

/* The messages of the open, kept together. */
static const char MSG_CANT_READ[] = "Can't read .dpi file, %s";
static const char MSG_BAD_HEADER[] = "Unrecognized dpi header in %s\n";
static const char MSG_PROPERTIES[] = "%s contains unrecognized properties value, 0x%lx, in header. Data may be ignored";
static const char MSG_UNEXPECTED_END[] = "unexpected end of file '%s',Expected %d records. Read %d";
static const char MSG_UNKNOWN_EXTENSION[] = "Unrecognized extension segment id, 0x%lx. Attempting to skip.";
static const char MSG_CANNOT_PROCESS[] = "cannot process .dpi file, '%s'";
static const char MSG_INCOMPATIBLE[] =
    "%s has old or incompatible file format\n\tDelete file and redo instrumentation compilation/execution.";
static const char MSG_MULTIPLE[] = "Multiple profile entries in %s match lookup key, %s";

static const uint32_t HEADER_WORDS_BYTES = 16;   /* version, runs, segment count, reserved */
static const uint32_t OLD_RECORD_MIN = 8;        /* flags word and length word */

/* ---- header ---- */

/* A header read that must succeed: a short one ends the run. */
static void vemtra_Read_Header_Bytes(VEMTRA_INPUT_FILE *input_file, unsigned char *bytes, size_t count)
{
    if (fread(bytes, 1, count, input_file->fp) != count)
        VEMTRA_Tool_Error(1, MSG_CANT_READ, input_file->file_name);
}

static void vemtra_Keep_Name_Field(DPI_FILE *dpi, const unsigned char *field)
{
    dpi->name_field = static_cast<char *>(VEMTRA_Malloc(VEMTRA_NAME_FIELD_SIZE + 1));
    memcpy(dpi->name_field, field, VEMTRA_NAME_FIELD_SIZE);
    dpi->name_field[VEMTRA_NAME_FIELD_SIZE] = '\0';
}

void VEMTRA_Read_Dpi_Header(VEMTRA_INPUT_FILE *input_file)
{
    FILE *fp = input_file->fp;
    const char *name = input_file->file_name;
    DPI_FILE *dpi = input_file->dpi;

    unsigned char first[4];
    checked_fread(first, 1, sizeof first, fp, name);
    checked_fseek(fp, -4, SEEK_CUR, name);

    if (vemtra_Le_Value(first, 4) == VEMTRA_DPI_MAGIC_OLD) {
        unsigned char header[VEMTRA_DPI_OLD_HEADER_SIZE];
        checked_fread(header, 1, sizeof header, fp, name);
        dpi->magic = VEMTRA_DPI_MAGIC_OLD;
        dpi->runs = static_cast<uint32_t>(vemtra_Le_Value(header + 4, 4));
        dpi->segment_count = static_cast<uint32_t>(vemtra_Le_Value(header + 8, 4));
        dpi->reserved = static_cast<uint32_t>(vemtra_Le_Value(header + 12, 4));
        vemtra_Keep_Name_Field(dpi, header + 16);
        input_file->data_start = static_cast<uint64_t>(checked_ftell(fp, name));
        input_file->is_new_form = 0;
        input_file->success = 1;
        return;
    }

    int64_t start = checked_ftell(fp, name);
    unsigned char word[8];
    vemtra_Read_Header_Bytes(input_file, word, 8);
    if (vemtra_Le_Value(word, 8) != VEMTRA_DPI_MAGIC_NEW) {
        VEMTRA_Tool_Warning(MSG_BAD_HEADER, name);
        VEMTRA_Tool_Error(1, MSG_CANT_READ, name);
    }
    vemtra_Read_Header_Bytes(input_file, word, 8);
    uint64_t header_length = vemtra_Le_Value(word, 8);
    unsigned char words[HEADER_WORDS_BYTES];
    vemtra_Read_Header_Bytes(input_file, words, sizeof words);
    unsigned char field[VEMTRA_NAME_FIELD_SIZE];
    vemtra_Read_Header_Bytes(input_file, field, sizeof field);

    uint32_t header_version = static_cast<uint32_t>(vemtra_Le_Value(words, 4));
    input_file->properties = 0;
    if (header_version == VEMTRA_DPI_HEADER_PROPS) {
        vemtra_Read_Header_Bytes(input_file, word, 8);
        input_file->properties = vemtra_Le_Value(word, 8);
        if (input_file->properties & 2) {
            vemtra_Read_Header_Bytes(input_file, word, 8);
            input_file->extra_word = vemtra_Le_Value(word, 8);
        }
        if (input_file->properties > 3)
            VEMTRA_Tool_Warning(MSG_PROPERTIES, name, static_cast<unsigned long>(input_file->properties));
    }

    dpi->magic = VEMTRA_DPI_MAGIC_NEW;
    dpi->runs = static_cast<uint32_t>(vemtra_Le_Value(words + 4, 4));
    dpi->segment_count = static_cast<uint32_t>(vemtra_Le_Value(words + 8, 4));
    dpi->reserved = static_cast<uint32_t>(vemtra_Le_Value(words + 12, 4));
    dpi->has_flow_graph = static_cast<int32_t>(input_file->properties & 1);
    vemtra_Keep_Name_Field(dpi, field);
    input_file->data_start = static_cast<uint64_t>(start) + 16 + header_length;
    input_file->is_new_form = 1;
    input_file->success = 1;
}

/* ---- directory, first pass: where every segment and extension lies ---- */

/* Records an extension block of a known kind in the entry. */
static bool vemtra_Note_Extension(DPI_DIRECTORY_ENTRY *entry, uint64_t tag, uint64_t offset, uint64_t length)
{
    uint32_t length32 = static_cast<uint32_t>(length);
    switch (tag) {
    case VEMTRA_TAG_FLOW_GRAPH:
        entry->flow_graph_offset = offset;
        entry->flow_graph_length = length32;
        return true;
    case VEMTRA_TAG_SRC_ROOT:
        entry->src_root_offset = offset;
        entry->src_root_length = length32;
        return true;
    case VEMTRA_TAG_D1F0:
        entry->ext_d1f0_offset = offset;
        entry->ext_d1f0_length = length32;
        return true;
    case VEMTRA_TAG_DC6A:
        entry->ext_dc6a_offset = offset;
        entry->ext_dc6a_length = length32;
        return true;
    default:
        return false;
    }
}

/* Moves `length` bytes on from `offset`, or to the end when that lies beyond. */
static void vemtra_Seek_Past(VEMTRA_DPI_STREAM *stream, uint64_t offset, uint64_t length)
{
    uint64_t size = static_cast<uint64_t>(vemtra_Dpi_Stream_Size(stream));
    vemtra_Dpi_Stream_Seek(stream, (offset > size || length > size - offset) ? size : offset + length);
}

/* Walks the extension blocks behind a segment, up to the next segment tag
 * (which is left unread) or the end of the file. Returns false for a block
 * this reader cannot skip. */
static bool vemtra_Walk_Extensions(VEMTRA_INPUT_FILE *input_file, VEMTRA_DPI_STREAM *stream,
                                   DPI_DIRECTORY_ENTRY *entry)
{
    int64_t size = vemtra_Dpi_Stream_Size(stream);
    while (vemtra_Dpi_Stream_Tell(stream) < size) {
        uint64_t tag = vemtra_Dpi_Read_U64(stream);
        if (tag == TAG_SEGMENT_XDPI) {
            vemtra_Dpi_Stream_Seek(stream, static_cast<uint64_t>(vemtra_Dpi_Stream_Tell(stream)) - 8);
            return true;
        }
        uint64_t length = vemtra_Dpi_Read_U64(stream);
        uint64_t offset = static_cast<uint64_t>(vemtra_Dpi_Stream_Tell(stream));
        if (!vemtra_Note_Extension(entry, tag, offset, length)) {
            if ((tag & VEMTRA_TAG_EXTENSION_BITS) != VEMTRA_TAG_EXTENSION_BITS) {
                VEMTRA_Tool_Warning(MSG_CANNOT_PROCESS, input_file->file_name);
                return false;
            }
            VEMTRA_Tool_Warning(MSG_UNKNOWN_EXTENSION, static_cast<unsigned long>(tag));
        }
        vemtra_Seek_Past(stream, offset, length);
    }
    return true;
}

/* Finds every announced segment. Returns false after a warning. */
/* The directory's entries while they are found: one array that becomes the
 * directory itself. */
struct vemtra_entry_list {
    DPI_DIRECTORY_ENTRY *items = nullptr;
    size_t count = 0;
    size_t capacity = 0;

    size_t size() const { return count; }
    void push_back(const DPI_DIRECTORY_ENTRY &entry)
    {
        if (count == capacity) {
            capacity = capacity == 0 ? 16 : 2 * capacity;
            items = static_cast<DPI_DIRECTORY_ENTRY *>(VEMTRA_Realloc(items, capacity * sizeof(DPI_DIRECTORY_ENTRY)));
        }
        items[count++] = entry;
    }
};

static bool vemtra_Locate_Segments(VEMTRA_INPUT_FILE *input_file, VEMTRA_DPI_STREAM *stream,
                                   vemtra_entry_list &entries)
{
    DPI_FILE *dpi = input_file->dpi;
    int64_t size = vemtra_Dpi_Stream_Size(stream);
    for (uint32_t read = 0; read < dpi->segment_count; read++) {
        if (vemtra_Dpi_Stream_Tell(stream) >= size) {
            VEMTRA_Tool_Warning(MSG_UNEXPECTED_END, input_file->file_name, static_cast<int>(dpi->segment_count),
                                static_cast<int>(read));
            return false;
        }
        DPI_DIRECTORY_ENTRY entry;
        memset(&entry, 0, sizeof entry);
        uint64_t offset = static_cast<uint64_t>(vemtra_Dpi_Stream_Tell(stream));
        /* Each record says where the next begins, so the walk waits on
         * memory at every record; the bytes a few records ahead are asked
         * for now, as a streaming read would have them. */
        for (uint64_t ahead = 1024; ahead < 1024 + 256; ahead += 64)
            vemtra_Dpi_Stream_Prefetch(stream, offset + ahead);
        if (!input_file->is_new_form) {
            uint32_t flags = vemtra_Dpi_Read_U32(stream);
            if (flags & VEMTRA_SEG_COUNTERS_64)
                vemtra_Dpi_Read_U32(stream);
            uint32_t length = vemtra_Dpi_Read_U32(stream);
            /* The next record begins `length` bytes on, however short: a
             * record of length 0 is met again as the next one. Such a walk
             * does not advance, so the directory could outgrow any file;
             * past one entry per byte of the file it is given up. */
            if (length == 0 && entries.size() > static_cast<uint64_t>(size)) {
                VEMTRA_Tool_Warning(MSG_CANNOT_PROCESS, input_file->file_name);
                return false;
            }
            entry.segment_offset = offset;
            entry.segment_length = length;
            vemtra_Seek_Past(stream, offset, length);
        } else {
            uint64_t segment_magic = vemtra_Dpi_Read_U64(stream);
            ASSERTX(segment_magic == TAG_SEGMENT_XDPI);
            uint64_t length = vemtra_Dpi_Read_U64(stream);
            entry.segment_offset = offset + 16;
            entry.segment_length = static_cast<uint32_t>(length);
            vemtra_Seek_Past(stream, entry.segment_offset, length);
            if (vemtra_Dpi_Stream_Tell(stream) < size && !vemtra_Walk_Extensions(input_file, stream, &entry))
                return false;
        }
        entries.push_back(entry);
    }
    return true;
}

/* ---- directory, second pass: names, keys, frequencies, addresses ---- */

/* The names the directory derives from the file's names, each made once:
 * many segments may name one string (one file, or a hostile profile whose
 * segments all name one long string), and their entries then share what is
 * derived from it. Names read from the file are used in place and keyed by
 * their address, so equal offsets are recognised without reading the
 * string again. */
struct vemtra_string_pool {
    struct pair_hash {
        size_t operator()(const std::pair<const void *, uint64_t> &key) const
        {
            return std::hash<const void *>()(key.first) ^ (key.second * 0x9E3779B97F4A7C15ull);
        }
    };
    std::vector<char *> owned;
    /* The keys, laid end to end in large blocks: one per segment, they would
     * otherwise cost an allocation (and its overhead) each. */
    std::vector<std::unique_ptr<char[]>> key_blocks;
    char *key_free = nullptr;
    size_t key_room = 0;
    /* (file name, source-root length) -> the re-rooted name */
    std::unordered_map<std::pair<const void *, uint64_t>, char *, pair_hash> rerooted;
    /* file name -> the name with its directory's physical form */
    std::unordered_map<const void *, char *> physical;
    /* (file name, function name) -> "<file>'<function>'" */
    std::unordered_map<std::pair<const void *, uint64_t>, char *, pair_hash> keys;

    char *own(char *text)
    {
        owned.push_back(text);
        return text;
    }
    char *keyBytes(size_t size)
    {
        static const size_t KEY_BLOCK = 1 << 16;
        if (size > key_room) {
            size_t block = size > KEY_BLOCK ? size : KEY_BLOCK;
            key_blocks.emplace_back(new char[block]);
            key_free = key_blocks.back().get();
            key_room = block;
        }
        char *bytes = key_free;
        key_free += size;
        key_room -= size;
        return bytes;
    }
    /* The look-up maps serve the directory's making only. */
    void forgetLookups()
    {
        decltype(rerooted)().swap(rerooted);
        decltype(physical)().swap(physical);
        decltype(keys)().swap(keys);
    }
    ~vemtra_string_pool()
    {
        for (char *text : owned)
            free(text);
    }
};

/* The directory's form of a file name: re-rooted by the segment's source
 * root length, then mapped to its physical directory; owned by the pool. */
static char *vemtra_Entry_File_Name(VEMTRA_DPI_STREAM *stream, vemtra_string_pool *pool,
                                    const DPI_DIRECTORY_ENTRY *entry, const char *file_name)
{
    char *name = const_cast<char *>(file_name);
    if (entry->src_root_offset != 0) {
        vemtra_Dpi_Stream_Seek(stream, entry->src_root_offset);
        uint32_t src_root = vemtra_Dpi_Read_U32(stream);
        char *&rerooted = pool->rerooted[{file_name, src_root}];
        if (rerooted == nullptr) {
            DPI_S segment;
            memset(&segment, 0, sizeof segment);
            DPI_S *dpi = &segment;
            dpi->file_name = VEMTRA_Strdup(file_name);
            dpi->src_root = src_root;
            vemtra_Apply_Dpi_Src_Root(dpi);
            rerooted = pool->own(dpi->file_name);
        }
        name = rerooted;
    }
    if (VEMTRA_expand_symbolic_links) {
        char *&mapped = pool->physical[name];
        if (mapped == nullptr)
            mapped = pool->own(VEMTRA_Strdup(vemtra_Physical_File_Name(name)));
        name = mapped;
    }
    return name;
}

static const char *vemtra_Basename(const char *name)
{
    if (name == nullptr)
        VEMTRA_Tool_Error(1, "VEMTRA_Basename: null name");
    const char *slash = strrchr(name, '/');
    return slash != nullptr ? slash + 1 : name;
}

/* "<file>'<function>'", the directory's sort and lookup key, made in the
 * memory `allocate` gives for its size. */
template <typename Allocate>
static char *vemtra_Make_Key(const char *file_name, const char *function_name, Allocate allocate)
{
    const char *file = file_name;
    if (VEMTRA_ignore_src_dir_names)
        file = vemtra_Simplify_Path(vemtra_Basename(file_name));
    size_t file_length = strlen(file);
    size_t function_length = strlen(function_name);
    char *key = allocate(file_length + function_length + 3);
    memcpy(key, file, file_length);
    key[file_length] = '\'';
    memcpy(key + file_length + 1, function_name, function_length);
    key[file_length + 1 + function_length] = '\'';
    key[file_length + function_length + 2] = '\0';
    return key;
}

const char *vemtra_Lookup_Key_Scratch(const char *file_name, const char *function_name)
{
    static std::vector<char> scratch;
    return vemtra_Make_Key(file_name, function_name, [](size_t size) {
        if (scratch.size() < size)
            scratch.resize(size);
        return scratch.data();
    });
}

/* Keys of at least this many bytes are shared between the entries that
 * name the same pair. */
static const size_t SHARED_KEY_LENGTH = 256;

static void vemtra_Fill_Entry(VEMTRA_INPUT_FILE *input_file, VEMTRA_DPI_STREAM *stream, DPI_DIRECTORY_ENTRY *entry)
{
    DPI_FILE *dpi_file = input_file->dpi;

    /* 1. The layout, from the flags word's low half. */
    vemtra_Dpi_Stream_Seek(stream, entry->segment_offset);
    uint32_t flags = vemtra_Dpi_Read_U32(stream);
    int wide = (flags & VEMTRA_SEG_COUNTERS_64) != 0;
    VEMTRA_dpi_64bit_counters = wide;

    /* 2. Only version 2 (32-bit) and version 3 (64-bit) records are known. */
    if (VEMTRA_SEG_VERSION(flags) != (wide ? 3u : 2u))
        VEMTRA_Tool_Error(1, MSG_INCOMPATIBLE, input_file->file_name);

    vemtra_Dpi_Stream_Seek(stream, entry->segment_offset);
    VEMTRA_RECORD_SUMMARY summary;
    vemtra_Read_Dpi_Summary(&summary, stream, wide);

    /* 3 to 5. Names, key, flags and frequency. */
    vemtra_string_pool *pool = dpi_file->strings;
    entry->file_name = vemtra_Entry_File_Name(stream, pool, entry, summary.file_name);
    entry->function_name = const_cast<char *>(summary.function_name);
    auto makeKey = [&] {
        return vemtra_Make_Key(entry->file_name, entry->function_name,
                               [pool](size_t size) { return pool->keyBytes(size); });
    };
    /* Entries that name one long pair share one key: many segments naming
     * one long string cost its bytes once. An ordinary key is cheaper to
     * make again than to look up. */
    if (strnlen(entry->file_name, SHARED_KEY_LENGTH) + strnlen(entry->function_name, SHARED_KEY_LENGTH) <
        SHARED_KEY_LENGTH) {
        entry->lookup_key = makeKey();
    } else {
        char *&key = pool->keys[{entry->file_name, reinterpret_cast<uintptr_t>(entry->function_name)}];
        if (key == nullptr)
            key = makeKey();
        entry->lookup_key = key;
    }
    entry->flags = static_cast<uint32_t>(summary.word_c & 3);
    entry->word_b = summary.word_b;
    entry->frequency = static_cast<float>(summary.max_entry_count) / static_cast<float>(dpi_file->runs);
    if (entry->frequency > dpi_file->max_frequency)
        dpi_file->max_frequency = entry->frequency;
}

/* 6. The address tables, made on their first lookup: every entry's function
 * and virtual table, in file order, with what the directory keeps of it. */
static void vemtra_Fill_Address_Tables(void *context)
{
    DPI_FILE *dpi_file = static_cast<DPI_FILE *>(context);
    std::vector<const DPI_DIRECTORY_ENTRY *> in_file_order;
    in_file_order.reserve(dpi_file->segment_count);
    for (uint32_t i = 0; i < dpi_file->segment_count; i++)
        in_file_order.push_back(&dpi_file->directory[i]);
    std::sort(in_file_order.begin(), in_file_order.end(),
              [](const DPI_DIRECTORY_ENTRY *a, const DPI_DIRECTORY_ENTRY *b) {
                  return a->segment_offset < b->segment_offset;
              });
    VEMTRA_DPI_STREAM *stream = dpi_file->stream;
    int64_t position = vemtra_Dpi_Stream_Tell(stream);
    for (const DPI_DIRECTORY_ENTRY *entry : in_file_order) {
        vemtra_Dpi_Stream_Seek(stream, entry->segment_offset);
        int wide = (vemtra_Dpi_Read_U32(stream) & VEMTRA_SEG_COUNTERS_64) != 0;
        vemtra_Dpi_Stream_Seek(stream, entry->segment_offset);
        VEMTRA_RECORD_SUMMARY summary;
        vemtra_Read_Dpi_Summary(&summary, stream, wide);
        if (summary.function_address != 0)
            vemtra_Add_Func_Address(summary.function_address, entry->function_name, entry->file_name,
                                    entry->word_b, entry->flags, entry->frequency);
        if (summary.vtable_address != 0)
            vemtra_Add_Vtbl_Address(summary.vtable_address, summary.vtable_name);
    }
    vemtra_Dpi_Stream_Seek(stream, static_cast<uint64_t>(position));
}

/* Entries of one (file, function) pair share their key, so a shared key is
 * known equal without reading it: that keeps many segments naming one long
 * string from costing its length at every comparison. */
static bool vemtra_Same_Key(const DPI_DIRECTORY_ENTRY &a, const DPI_DIRECTORY_ENTRY &b)
{
    return a.lookup_key == b.lookup_key || strcmp(a.lookup_key, b.lookup_key) == 0;
}

static bool vemtra_Key_Less(const DPI_DIRECTORY_ENTRY &a, const DPI_DIRECTORY_ENTRY &b)
{
    return a.lookup_key != b.lookup_key && strcmp(a.lookup_key, b.lookup_key) < 0;
}

int VEMTRA_Read_Dpi_Segment_List(VEMTRA_INPUT_FILE *input_file)
{
    ASSERTX(input_file->type == FILE_TYPE_DPI);
    DPI_FILE *dpi_file = input_file->dpi;

    /* 1 and 2. The file's size, then the start of the segment data. */
    VEMTRA_DPI_STREAM *stream = vemtra_Dpi_Stream_Create(input_file->fp, input_file->file_name);
    dpi_file->stream = stream;
    vemtra_Dpi_Stream_Seek(stream, input_file->data_start);

    /* 3. Fresh address tables, filled when first looked into. */
    vemtra_Address_Tables_Create(vemtra_Fill_Address_Tables, dpi_file);

    /* 4. Where each segment lies. Every record takes at least 8 bytes, so
     * the file's size bounds what is reserved for an announced count. */
    vemtra_entry_list entries;
    uint64_t room = static_cast<uint64_t>(vemtra_Dpi_Stream_Size(stream)) / OLD_RECORD_MIN + 1;
    entries.capacity = static_cast<size_t>(std::max<uint64_t>(1, std::min<uint64_t>(dpi_file->segment_count, room)));
    entries.items = static_cast<DPI_DIRECTORY_ENTRY *>(VEMTRA_Malloc(entries.capacity * sizeof(DPI_DIRECTORY_ENTRY)));
    if (!vemtra_Locate_Segments(input_file, stream, entries)) {
        free(entries.items);
        return 0;
    }

    /* 5. What each segment holds. The records lie far apart in a large
     * file: a record a few places ahead is asked of memory while this one
     * is read, so that the reads overlap. */
    static const size_t READ_AHEAD = 8;
    for (size_t i = 0; i < entries.count; i++) {
        if (i + READ_AHEAD < entries.count)
            vemtra_Dpi_Stream_Prefetch(stream, entries.items[i + READ_AHEAD].segment_offset);
        vemtra_Fill_Entry(input_file, stream, &entries.items[i]);
    }

    dpi_file->strings->forgetLookups();

    /* 6. Sorted by key; equal keys keep their file order. The entries are
     * large: their places are sorted, then the entries are moved into
     * their ranks in place, each cycle of the permutation with one spare. */
    std::vector<uint32_t> order(entries.count);
    for (size_t i = 0; i < entries.count; i++)
        order[i] = static_cast<uint32_t>(i);
    const DPI_DIRECTORY_ENTRY *items = entries.items;
    std::stable_sort(order.begin(), order.end(),
                     [items](uint32_t a, uint32_t b) { return vemtra_Key_Less(items[a], items[b]); });
    /* order[rank] = place, turned into where each place goes. */
    std::vector<uint32_t> destination(entries.count);
    for (size_t rank = 0; rank < entries.count; rank++)
        destination[order[rank]] = static_cast<uint32_t>(rank);
    std::vector<uint32_t>().swap(order);
    for (size_t start = 0; start < entries.count; start++) {
        if (destination[start] == start)
            continue;
        DPI_DIRECTORY_ENTRY moving = entries.items[start];
        size_t to = destination[start];
        destination[start] = static_cast<uint32_t>(start);
        while (to != start) {
            std::swap(moving, entries.items[to]);
            size_t next = destination[to];
            destination[to] = static_cast<uint32_t>(to);
            to = next;
        }
        entries.items[start] = moving;
    }
    dpi_file->directory = entries.items;
    DPI_DIRECTORY_ENTRY *sorted = dpi_file->directory;

    /* 7. One warning per group of equal keys; the entries all stay. */
    for (size_t i = 1; i < entries.count; i++) {
        if (!vemtra_Same_Key(sorted[i], sorted[i - 1]))
            continue;
        if (!sorted[i - 1].shared_key)
            VEMTRA_Tool_Warning(MSG_MULTIPLE, input_file->file_name, sorted[i].lookup_key);
        sorted[i - 1].shared_key = 1;
        sorted[i].shared_key = 1;
    }

    /* 8. Ready for the pair walk and on-demand fetches. */
    dpi_file->cursor = 0;
    dpi_file->last_found = UINT32_MAX;
    return 1;
}

/* ---- open, walk, close ---- */

/* The directory and every name it derived. */
static void vemtra_Free_Directory(DPI_FILE *dpi_file)
{
    free(dpi_file->directory);
    dpi_file->directory = nullptr;
    delete dpi_file->strings;
    dpi_file->strings = nullptr;
}

/* A file being opened; unless released, its destructor undoes the open
 * (on the failure path, and when a documented exit unwinds instead of
 * ending the process). */
struct vemtra_open_guard {
    VEMTRA_INPUT_FILE *input_file;
    DPI_FILE *dpi_file;
    bool released;
    ~vemtra_open_guard()
    {
        free(input_file->file_name);
        if (released || dpi_file == nullptr)
            return;
        vemtra_Address_Tables_Release();
        vemtra_Free_Directory(dpi_file);
        vemtra_Dpi_Stream_Free(dpi_file->stream);
        checked_fclose(dpi_file->fp);
        free(dpi_file->name_field);
        free(dpi_file);
    }
};

DPI_FILE *VEMTRA_Open_Dpi_File(const char *file_name)
{
    /* 1. The descriptor. */
    VEMTRA_INPUT_FILE input;
    memset(&input, 0, sizeof input);
    VEMTRA_INPUT_FILE *input_file = &input;
    input_file->file_name = VEMTRA_Strdup(file_name);
    input_file->weight = 1.0;
    input_file->type = FILE_TYPE_DPI;
    vemtra_open_guard guard = {input_file, nullptr, false};

    /* 2. The file, under a shared lock. */
    input_file->fp = checked_fopen(file_name, "rb");
    if (input_file->fp == nullptr)
        return nullptr;
    DPI_FILE *dpi_file = static_cast<DPI_FILE *>(VEMTRA_Calloc(1, sizeof(DPI_FILE)));
    dpi_file->fp = input_file->fp;
    dpi_file->strings = new vemtra_string_pool();
    input_file->dpi = dpi_file;
    guard.dpi_file = dpi_file;

    /* 3 to 5. The header, into the record. */
    VEMTRA_Read_Dpi_Header(input_file);

    /* 6. The directory; on failure the guard closes and frees it all. */
    if (!VEMTRA_Read_Dpi_Segment_List(input_file))
        return nullptr;

    /* 7. */
    guard.released = true;
    return dpi_file;
}

/* The pair under the cursor, or two nulls past the end. */
static void vemtra_Current_Pair(DPI_FILE *dpi_file, char **file_name, char **function_name)
{
    if (dpi_file->cursor >= dpi_file->segment_count) {
        *file_name = nullptr;
        *function_name = nullptr;
        return;
    }
    *file_name = dpi_file->directory[dpi_file->cursor].file_name;
    *function_name = dpi_file->directory[dpi_file->cursor].function_name;
}

void VEMTRA_Get_First_File_Function_Pair(DPI_FILE *dpi_file, char **file_name, char **function_name)
{
    dpi_file->cursor = 0;
    vemtra_Current_Pair(dpi_file, file_name, function_name);
}

void VEMTRA_Get_Next_File_Function_Pair(DPI_FILE *dpi_file, char **file_name, char **function_name)
{
    if (dpi_file->cursor < dpi_file->segment_count)
        dpi_file->cursor++;
    vemtra_Current_Pair(dpi_file, file_name, function_name);
}

void VEMTRA_Close_Dpi_File(DPI_FILE *dpi_file)
{
    vemtra_Address_Tables_Release();
    vemtra_Dpi_Stream_Free(dpi_file->stream);
    checked_fclose(dpi_file->fp);
    vemtra_Free_Directory(dpi_file);
    free(dpi_file->name_field);
    free(dpi_file);
}
