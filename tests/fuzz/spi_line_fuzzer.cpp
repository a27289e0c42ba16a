// spi_line_fuzzer.cpp -- static profile text: every header is read the way
// the run driver reads them (header, then the rest of the line skipped).
// The first byte chooses re-rooting and is not part of the text.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "shared/vemtra/client/spi_reader.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/fuzz/fuzz_exit.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    VEMTRA_Src_Root_Dir_Set("/fuzz/root", 0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    uint32_t use_src_root = data[0] & 1;
    FILE *stream = tmpfile();
    fwrite(data + 1, 1, size - 1, stream);
    rewind(stream);
    try {
        SPI_LINE_HEADER_S header;
        while (VEMTRA_SPI_Read_Line_Header(stream, "fuzz.spi", &header, use_src_root)) {
            int c;
            while ((c = getc(stream)) != EOF && c != '\n') {
            }
            if (c == EOF)
                break;
        }
    } catch (const FuzzExit &) {
    }
    fclose(stream);
    return 0;
}
