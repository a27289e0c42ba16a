// profile_writer.cpp -- static and dynamic profiles from a brief project
// description. Multi-byte values are written little-endian byte by byte.
#include "import/profile_writer.h"

#include <cstdio>
#include <map>

namespace vemtra_writer {
namespace {

const uint64_t MAGIC_NEW = 0xDC12;
const uint32_t MAGIC_OLD = 0xDC0B;
const uint32_t HEADER_PROPS = 0xDC0C;
const uint32_t HEADER_PLAIN = 0xDC0D;
const uint64_t TAG_SEGMENT = 0xDEEF;
const uint64_t TAG_SRC_ROOT = 0xDA5E;
const size_t NAME_FIELD = 512;
const char NAME_TEXT[] = "vemcov test profile";
const uint32_t FLAG_LINES = 0x10;
const uint32_t FLAG_64 = 0x40;
const uint32_t FLAG_PACKED = 0x20000;
const int VALUE_TARGETS = 4;

void Put(std::string &out, uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; i++)
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}
void Put32(std::string &out, uint64_t value) { Put(out, value, 4); }
void Put64(std::string &out, uint64_t value) { Put(out, value, 8); }

// NUL-terminated strings laid out from a known absolute offset; equal
// strings share one copy.
class StringTable {
public:
    explicit StringTable(uint64_t base) : base_(base) {}
    uint64_t Add(const std::string &text)
    {
        auto found = offsets_.find(text);
        if (found != offsets_.end())
            return found->second;
        uint64_t offset = base_ + bytes_.size();
        bytes_ += text;
        bytes_.push_back('\0');
        offsets_[text] = offset;
        return offset;
    }
    const std::string &bytes() const { return bytes_; }

private:
    uint64_t base_;
    std::string bytes_;
    std::map<std::string, uint64_t> offsets_;
};

std::vector<EntrySpec> EntriesOf(const FunctionSpec &f)
{
    if (f.entries)
        return *f.entries;
    return {EntrySpec{f.name, 0}};
}

// The segment record of `f`, its names placed in `strings`.
std::string SegmentPayload(const Project &p, const FunctionSpec &f, StringTable &strings)
{
    RecordLayout layout = f.layout.value_or(p.layout);
    LineInfo lines = f.line_info.value_or(p.line_info);
    bool wide = layout == RecordLayout::Version3;
    std::vector<EntrySpec> entries = EntriesOf(f);

    uint64_t flags = f.extra_flags;
    uint32_t version = f.record_version.value_or(wide ? 3 : 2);
    flags = (flags & ~uint64_t(0x7F00)) | (uint64_t(version & 0x7F) << 8);
    if (wide)
        flags |= FLAG_64;
    if (lines != LineInfo::None)
        flags |= FLAG_LINES;
    if (lines == LineInfo::Packed)
        flags |= FLAG_PACKED;

    uint64_t file_off = strings.Add(f.file);
    uint64_t func_off = strings.Add(f.name);
    // A version 2 reader composes the function-name offset with the
    // vtable-name offset as its high half, so "no vtable name" is offset 0.
    uint64_t vtable_off = (!wide && f.vtable_name.empty()) ? 0 : strings.Add(f.vtable_name);
    std::vector<uint64_t> entry_offs;
    for (const EntrySpec &e : entries)
        entry_offs.push_back(strings.Add(e.name));

    std::string out;
    int counter = wide ? 8 : 4;
    Put(out, flags, wide ? 8 : 4);
    Put32(out, f.word_a);  // the old form reads word A as the record length; patched below
    Put32(out, entries.size());
    Put32(out, f.blocks.size());
    Put32(out, f.other.size());
    Put32(out, f.value_sites.size());
    // Version 3 keeps word B before an 8-byte attribute word; version 2
    // reads a 4-byte attribute word first.
    if (wide) {
        Put32(out, f.word_b);
        Put64(out, f.attributes);
    } else {
        Put32(out, f.attributes);
        Put32(out, f.word_b);
    }
    // Version 2 has the same 8-byte fields here, then a 32-bit word: 44
    // bytes that its reader composes in an overlapping way.
    Put64(out, file_off);
    Put64(out, func_off);
    Put64(out, f.address);
    Put64(out, f.vtable_address);
    Put64(out, vtable_off);
    if (!wide)
        Put32(out, 0);
    for (const BlockSpec &b : f.blocks)
        Put(out, b.count, counter);
    for (uint64_t o : f.other)
        Put(out, o, counter);
    for (const ValueSiteSpec &v : f.value_sites)
        Put(out, v.block, counter);
    for (const ValueSiteSpec &v : f.value_sites) {
        for (int t = 0; t < VALUE_TARGETS; t++) {
            TargetSpec target = t < static_cast<int>(v.targets.size()) ? v.targets[t] : TargetSpec{};
            Put64(out, target.address);
            Put64(out, target.calls);
            Put64(out, target.flags);
        }
    }
    for (uint64_t off : entry_offs)
        Put(out, off, counter);
    for (const EntrySpec &e : entries)
        Put32(out, e.block);
    if (wide && entries.size() % 2 == 1)
        Put32(out, 0);
    if (lines == LineInfo::Packed && wide) {
        for (const BlockSpec &b : f.blocks) {
            Put32(out, (uint64_t(b.line) << 10) | (b.col & 0x3FF));
            Put32(out, (uint64_t(b.end_line) << 10) | (b.end_col & 0x3FF));
        }
    } else if (lines != LineInfo::None) {
        for (const BlockSpec &b : f.blocks) {
            Put32(out, b.line);
            Put32(out, b.col);
        }
    }
    return out;
}

// Extension blocks of a new-form segment.
std::string Extensions(const FunctionSpec &f)
{
    std::string out;
    if (f.src_root_length) {
        Put64(out, TAG_SRC_ROOT);
        Put64(out, 4);
        Put32(out, *f.src_root_length);
    }
    for (const ExtensionSpec &e : f.extensions) {
        Put64(out, e.tag);
        Put64(out, e.payload.size());
        out += e.payload;
    }
    return out;
}

std::vector<const FunctionSpec *> DpiFunctions(const Project &p)
{
    std::vector<const FunctionSpec *> list;
    for (const FunctionSpec &f : p.functions)
        if (f.in_dpi)
            list.push_back(&f);
    return list;
}

size_t WordAOffset(const Project &p, const FunctionSpec &f)
{
    return f.layout.value_or(p.layout) == RecordLayout::Version3 ? 8 : 4;
}

// Lays the whole file out; also reports where each segment starts.
std::string Build(const Project &p, std::vector<uint64_t> *offsets)
{
    bool old_form = p.header_form == DpiHeaderForm::Old;
    StringPlacement placement = p.strings;
    if (old_form && placement == StringPlacement::Default)
        placement = StringPlacement::InSegment;
    std::vector<const FunctionSpec *> functions = DpiFunctions(p);
    uint32_t announced = p.announced_segments.value_or(static_cast<uint32_t>(functions.size()));

    // 1. The fixed header fields.
    std::string header;
    std::string name_field = NAME_TEXT;
    name_field.resize(NAME_FIELD, '\0');
    if (old_form) {
        Put32(header, p.magic.value_or(MAGIC_OLD));
        Put32(header, p.runs);
        Put32(header, announced);
        Put32(header, 0);  // reserved
        header += name_field;
    } else {
        bool props = p.header_form == DpiHeaderForm::NewWithProperties;
        uint32_t version = props ? HEADER_PROPS : HEADER_PLAIN;
        Put64(header, p.magic.value_or(MAGIC_NEW));
        Put64(header, 0);  // header length, patched below
        Put32(header, version);
        Put32(header, p.runs);
        Put32(header, announced);
        Put32(header, 0);
        header += name_field;
        if (version == HEADER_PROPS) {
            Put64(header, p.properties);
            if (p.properties & 2)
                Put64(header, p.extra_word);
        }
        header.append(p.header_padding, '\0');
    }

    // 2. Sizes of every record, which do not depend on where names lie.
    std::vector<size_t> payload_sizes;
    for (const FunctionSpec *f : functions) {
        StringTable scratch(0);
        payload_sizes.push_back(SegmentPayload(p, *f, scratch).size());
    }

    // 3. Where the shared string table begins.
    uint64_t shared_base = 0;
    if (placement == StringPlacement::Default) {
        shared_base = header.size();
    } else if (placement == StringPlacement::AtEnd) {
        uint64_t end = header.size();
        for (size_t i = 0; i < functions.size(); i++) {
            end += (old_form ? 0 : 16) + payload_sizes[i] + (old_form ? 0 : Extensions(*functions[i]).size());
        }
        shared_base = end;
    }
    StringTable shared(shared_base);
    if (placement != StringPlacement::InSegment) {
        // Fill the shared table in function order so that offsets are stable.
        for (const FunctionSpec *f : functions)
            SegmentPayload(p, *f, shared);
    }
    if (placement == StringPlacement::Default)
        header += shared.bytes();
    if (!old_form)
        for (int i = 0; i < 8; i++)
            header[8 + i] = static_cast<char>(((header.size() - 16) >> (8 * i)) & 0xFF);

    // 4. The records.
    std::string out = header;
    for (size_t i = 0; i < functions.size(); i++) {
        const FunctionSpec &f = *functions[i];
        uint64_t payload_start = out.size() + (old_form ? 0 : 16);
        std::string payload;
        if (placement == StringPlacement::InSegment) {
            StringTable own(payload_start + payload_sizes[i]);
            payload = SegmentPayload(p, f, own);
            payload += own.bytes();
        } else {
            payload = SegmentPayload(p, f, shared);
        }
        if (old_form) {
            size_t at = WordAOffset(p, f);
            for (int b = 0; b < 4; b++)
                payload[at + b] = static_cast<char>((payload.size() >> (8 * b)) & 0xFF);
        } else {
            Put64(out, TAG_SEGMENT);
            Put64(out, payload.size());
        }
        if (offsets != nullptr)
            offsets->push_back(out.size());
        out += payload;
        if (!old_form)
            out += Extensions(f);
    }
    if (placement == StringPlacement::AtEnd)
        out += shared.bytes();
    return out;
}

std::string Masked(std::string text)
{
    for (char &c : text)
        if (c == ' ')
            c = '|';
    return text;
}

}  // namespace

FunctionSpec &Project::Add(const std::string &file, const std::string &name, uint32_t line, char linkage)
{
    FunctionSpec f;
    f.file = file;
    f.name = name;
    f.line = line;
    f.linkage = linkage;
    functions.push_back(f);
    return functions.back();
}

// One line of the static profile for `f`, in `form`.
static std::string SpiLine(SpiForm form, const FunctionSpec &f)
{
    std::string base = Masked(f.spi_base_dir), file = Masked(f.file), module = file + ".o";
    std::string routine = Masked(f.name);
    int blocks = f.block_count >= 0 ? f.block_count : static_cast<int>(f.blocks.size());
    char numbers[128];
    std::string out;
    if (form == SpiForm::V3 || form == SpiForm::V4) {
        snprintf(numbers, sizeof numbers, "V%d %zu %zu 0 %zu %zu ", form == SpiForm::V3 ? 3 : 4, base.size(),
                 file.size() + 1, module.size() + 1, routine.size() + 1);
        out = numbers + (base.empty() ? "" : base + " ");
    } else if (form != SpiForm::Unversioned) {
        snprintf(numbers, sizeof numbers, "V%d %zu %zu %zu ", form == SpiForm::V1 ? 1 : 2, file.size() + 1,
                 module.size() + 1, routine.size() + 1);
        out = numbers;
    }
    out += file + " " + module + " " + routine;
    if (form == SpiForm::V1 || form == SpiForm::Unversioned)
        snprintf(numbers, sizeof numbers, " %u %d %c", f.line, blocks, f.linkage);
    else
        snprintf(numbers, sizeof numbers, " %u %d %d %c", f.line, blocks, f.excluded_block_count, f.linkage);
    out += numbers;
    for (const CallSpec &c : f.calls) {
        snprintf(numbers, sizeof numbers, " %d %d ", c.block, c.site);
        out += numbers + c.callee;
    }
    return out + "\n";
}

std::string SpiText(const Project &project)
{
    std::string out;
    for (const FunctionSpec &f : project.functions)
        if (f.in_spi)
            out += SpiLine(project.spi_form, f);
    return out;
}

std::string DpiBytes(const Project &project)
{
    return Build(project, nullptr);
}

std::vector<uint64_t> SegmentOffsets(const Project &project)
{
    std::vector<uint64_t> offsets;
    Build(project, &offsets);
    return offsets;
}

std::string DpiWithOneLongName(int segments, size_t name_bytes)
{
    // The old form reads nothing after its last record, so the string can
    // end the file there.
    Project p;
    p.header_form = DpiHeaderForm::Old;
    p.strings = StringPlacement::AtEnd;
    for (int i = 0; i < segments; ++i)
        p.Add("F", "N", 1).Blocks({{1, 1, 1}}).Entries({});
    std::string bytes = DpiBytes(p);
    const uint64_t name_offset = bytes.size();
    // In a version 3 record the file and function name offsets follow
    // 40 bytes of counts and words.
    for (uint64_t record : SegmentOffsets(p)) {
        for (uint64_t field : {record + 40, record + 48})
            for (int b = 0; b < 8; ++b)
                bytes[field + b] = static_cast<char>((name_offset >> (8 * b)) & 0xFF);
    }
    bytes.append(name_bytes, 'x');
    return bytes;
}

bool WriteBytes(const std::string &path, const std::string &bytes)
{
    FILE *out = fopen(path.c_str(), "wb");
    if (out == nullptr)
        return false;
    bool ok = fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    return fclose(out) == 0 && ok;
}

}  // namespace vemtra_writer
