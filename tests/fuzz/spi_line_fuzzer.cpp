// spi_line_fuzzer.cpp -- static profile text: every header is read the way
// the run driver reads them (header, then the rest of the line skipped),
// once from the stream and once from the in-memory window (which reads
// plain lines in place); the two must read the same fields and end the same
// way. The first byte chooses re-rooting and is not part of the text.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "shared/vemtra/client/spi_reader.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/fuzz/fuzz_exit.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    VEMTRA_Src_Root_Dir_Set("/fuzz/root", 0);
    return 0;
}

static std::string Describe(const SPI_LINE_HEADER_S &r)
{
    std::string text = std::to_string(r.version);
    for (const char *field : {r.file_base_dir, r.file_name, r.full_path_name, r.module_base_dir, r.module_name,
                              r.full_path_module, r.routine_name}) {
        text += '\x01';
        text += field;
    }
    return text + '\x01' + std::to_string(r.line) + ' ' + std::to_string(r.block_count) + ' ' +
           std::to_string(r.excluded_block_count) + ' ' + std::to_string(r.linkage);
}

/* The headers read from the stream, then "end" or the status of the exit. */
static std::vector<std::string> ReadFromStream(FILE *stream, uint32_t use_src_root)
{
    std::vector<std::string> read;
    try {
        SPI_LINE_HEADER_S header;
        while (VEMTRA_SPI_Read_Line_Header(stream, "fuzz.spi", &header, use_src_root)) {
            read.push_back(Describe(header));
            int c;
            while ((c = getc(stream)) != EOF && c != '\n') {
            }
            if (c == EOF)
                break;
        }
        read.push_back("end");
    } catch (const FuzzExit &exit) {
        read.push_back("exit " + std::to_string(exit.status));
    }
    return read;
}

static std::vector<std::string> ReadFromWindow(FILE *stream, uint32_t use_src_root)
{
    std::vector<std::string> read;
    VEMTRA_SPI_TEXT text;
    try {
        VEMTRA_SPI_Text_Open(stream, "fuzz.spi", &text);
        SPI_LINE_HEADER_S header;
        if (!VEMTRA_SPI_Text_Empty(&text)) {
            do {
                if (!VEMTRA_SPI_Read_Line_Header_Text(&text, &header, use_src_root))
                    break;
                read.push_back(Describe(header));
            } while (VEMTRA_SPI_Text_Next_Line(&text));
        }
        read.push_back("end");
    } catch (const FuzzExit &exit) {
        read.push_back("exit " + std::to_string(exit.status));
    }
    VEMTRA_SPI_Text_Close(&text);
    return read;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    uint32_t use_src_root = data[0] & 1;
    FILE *stream = tmpfile();
    fwrite(data + 1, 1, size - 1, stream);
    rewind(stream);
    std::vector<std::string> fromStream = ReadFromStream(stream, use_src_root);
    rewind(stream);
    std::vector<std::string> fromWindow = ReadFromWindow(stream, use_src_root);
    fclose(stream);
    if (fromStream != fromWindow)
        abort();
    return 0;
}
