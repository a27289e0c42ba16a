// profile_writer.h -- writes static (.spi) and dynamic (.dpi) profiles from
// a brief description of a project: vemcov-import's output, and the tests',
// benchmarks', fuzz seeds' and example's input.
//
//     vemtra_writer::Project p;
//     p.runs = 2;
//     p.Add("/src/a.c", "main", 3).Blocks({{10, 3, 1}, {0, 5, 3}});   // count, line, col
//     std::string spi = vemtra_writer::SpiText(p);
//     std::string dpi = vemtra_writer::DpiBytes(p);
//
// Every function gets a line in the static profile and a segment in the
// dynamic one (switch either off per function). By default a segment has one
// entry, named like the function, at block 0; line/column data is unpacked;
// the record layout is version 3; the header is the new form with header
// version 0xDC0C and a properties word. The fields below vary everything
// else, for the other forms and for damaged files; a truncated file is
// DpiBytes(p).substr(0, n).
//
// Only the C++ standard library is used.
#ifndef VEMCOV_IMPORT_PROFILE_WRITER_H
#define VEMCOV_IMPORT_PROFILE_WRITER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vemtra_writer {

// ---- dynamic profile pieces ----

struct BlockSpec {
    uint64_t count = 0;      // executions over all runs
    uint32_t line = 0;       // start line (0: no position)
    uint32_t col = 0;        // start column
    uint32_t end_line = 0;   // end position; written only in the packed form
    uint32_t end_col = 0;
};

struct EntrySpec {
    std::string name;        // entry (call target) name
    uint32_t block = 0;      // index of the block it belongs to
};

// One indirect-call target of a value-profile site: a 24-byte record.
struct TargetSpec {
    uint64_t address = 0;    // target function's address
    uint64_t calls = 0;      // calls over all runs
    uint64_t flags = 0;      // bit 0: virtual call
};

// A value-profile site: values[k] is the index of the block holding the call,
// value_tables[k] the four target records (missing ones are written as zero).
struct ValueSiteSpec {
    uint64_t block = 0;
    std::vector<TargetSpec> targets;
};

// An extension block written after the segment (tag, then payload length,
// then payload).
struct ExtensionSpec {
    uint64_t tag = 0;
    std::string payload;
};

// One call-site entry of a static-profile line: " %d %d name".
struct CallSpec {
    int block = 0;           // index of the calling block
    int site = 0;            // call-site number
    std::string callee;      // e.g. "foo", "bar(E)", "(indirect)", "(G)baz"
};

enum class RecordLayout {
    Version3,  // 64-bit counters, 8-byte flags word (flag 0x40)
    // 32-bit counters. The writer lays the name offsets out as 8-byte fields;
    // the reader composes each with the 32-bit word at 8, 32 or 40 as its
    // high half, so the file name reads as empty (its offset points past the
    // end) and, with no vtable name (offset 0), the function name reads
    // right.
    Version2,
};

enum class LineInfo {
    None,      // no line/column data (flag 0x10 clear)
    Unpacked,  // flag 0x10: (line, column) per block
    Packed,    // flags 0x10 and 0x20000: two packed words per block (version 3)
};

struct FunctionSpec {
    // Shared by both files.
    std::string file;        // source file as the dynamic profile records it
    std::string name;        // (mangled) function name
    uint32_t line = 1;       // first source line
    char linkage = 'E';      // 'E' external, else static

    // Dynamic profile.
    bool in_dpi = true;
    std::vector<BlockSpec> blocks;
    std::optional<std::vector<EntrySpec>> entries;  // default: {name, block 0}
    std::vector<uint64_t> other;                    // other counters
    std::vector<ValueSiteSpec> value_sites;
    uint64_t address = 0;           // function address (0: none)
    uint64_t vtable_address = 0;
    std::string vtable_name;
    uint32_t word_a = 0;
    uint32_t word_b = 0;
    uint64_t attributes = 0;        // attribute word; bits 0 and 1 are the two flags
    uint64_t extra_flags = 0;       // OR-ed into the flags word (e.g. bit 0)
    std::optional<RecordLayout> layout;         // default: the project's
    std::optional<LineInfo> line_info;          // default: the project's
    std::optional<uint32_t> record_version;     // override the version in the flags
    std::optional<uint32_t> src_root_length;    // write a 0xDA5E extension
    std::vector<ExtensionSpec> extensions;      // after the source-root one

    // Static profile.
    bool in_spi = true;
    std::string spi_base_dir;                   // file base directory ("" none); module: file + ".o"
    int block_count = -1;                       // -1: number of blocks
    int excluded_block_count = 0;
    std::vector<CallSpec> calls;

    // Chainable setters for brief descriptions.
    FunctionSpec &Blocks(std::vector<BlockSpec> b) { blocks = std::move(b); return *this; }
    FunctionSpec &Entries(std::vector<EntrySpec> e) { entries = std::move(e); return *this; }
    FunctionSpec &Address(uint64_t a) { address = a; return *this; }
    FunctionSpec &Calls(std::vector<CallSpec> c) { calls = std::move(c); return *this; }
    FunctionSpec &OnlyInSpi() { in_dpi = false; return *this; }
    FunctionSpec &OnlyInDpi() { in_spi = false; return *this; }
};

enum class DpiHeaderForm {
    NewWithProperties,  // magic 0xDC12, header version 0xDC0C, properties word
    NewPlain,           // magic 0xDC12, header version 0xDC0D, no properties
    Old,                // magic 0xDC0B, 528-byte header, untagged records
};

enum class StringPlacement {
    Default,    // after the header fields (new forms), inside each record (old form)
    InSegment,  // inside each segment payload, after its fields
    AtEnd,      // after the last segment (the old form reads nothing there)
};

enum class SpiForm {
    V3, V4,        // lengths and base directories
    V1, V2,        // three sizes, no base directories
    Unversioned,   // no V token
};

struct Project {
    std::vector<FunctionSpec> functions;
    uint32_t runs = 1;

    // Project-wide defaults and header fields.
    RecordLayout layout = RecordLayout::Version3;
    LineInfo line_info = LineInfo::Unpacked;
    DpiHeaderForm header_form = DpiHeaderForm::NewWithProperties;
    uint64_t properties = 0;                    // bit 1 set adds the extra word
    uint64_t extra_word = 0;
    uint32_t header_padding = 0;                // extra bytes covered by the header length
    StringPlacement strings = StringPlacement::Default;
    std::optional<uint32_t> announced_segments; // default: the number of segments
    std::optional<uint64_t> magic;              // override the first 8 (new) / 4 (old) bytes

    SpiForm spi_form = SpiForm::V3;

    // Appends a function and returns it for further setting.
    FunctionSpec &Add(const std::string &file, const std::string &name, uint32_t line, char linkage = 'E');
};

// The static profile of the project: one line per function with in_spi, its
// module the file name with ".o" appended; spaces in the names are written
// as '|'.
std::string SpiText(const Project &project);

// The dynamic profile of the project: every function with in_dpi, in order.
std::string DpiBytes(const Project &project);

// Where each segment record (its payload) starts in DpiBytes(project), for
// tests that damage a file at a chosen field.
std::vector<uint64_t> SegmentOffsets(const Project &project);

// A dynamic profile of `segments` segments whose file and function names
// are all one string of `name_bytes` bytes that runs, without a NUL, to the
// end of the file: a reader that copies a name per segment needs
// segments x 2 x name_bytes of memory.
std::string DpiWithOneLongName(int segments, size_t name_bytes);

// Writes `bytes` to `path` (directories are not created). Returns false on
// failure.
bool WriteBytes(const std::string &path, const std::string &bytes);

}  // namespace vemtra_writer

#endif
