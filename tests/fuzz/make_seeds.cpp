// make_seeds.cpp -- writes the seed corpora of the two fuzz targets:
// make_seeds <spi-dir> <dpi-dir>. Every file form the writer knows appears.
#include <cstdio>
#include <string>

#include "tests/support/profile_writer.h"

using namespace testsupport;

static Project SmallProject()
{
    Project p;
    p.runs = 3;
    FunctionSpec &f = p.Add("/src/a.c", "main", 3).Blocks({{5, 3, 1, 3, 9}, {0, 4, 2, 5, 1}, {2, 6, 1}});
    f.Entries({{"main", 0}, {"main_alt", 2}});
    f.address = 0x401000;
    f.vtable_address = 0x602000;
    f.vtable_name = "_ZTV1A";
    f.other = {1};
    f.value_sites = {{1, {{0x401000, 4, 1}, {0x402000, 1, 0}}}};
    f.calls = {{0, 1, "g(E)"}, {1, 2, "(indirect)"}, {2, 3, "(G)h"}};
    p.Add("/src/b.c", "_Z1gv", 9, 'S').Blocks({{1, 9, 1}}).Address(0x402000);
    return p;
}

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: make_seeds <spi-dir> <dpi-dir>\n");
        return 1;
    }
    std::string spi_dir = argv[1], dpi_dir = argv[2];
    int n = 0;
    auto dpi = [&](const Project &p) { WriteBytes(dpi_dir + "/seed" + std::to_string(n++) + ".dpi", DpiBytes(p)); };
    auto spi = [&](const std::string &text) {
        // The first byte selects re-rooting.
        WriteBytes(spi_dir + "/seed" + std::to_string(n++) + ".spi", std::string("\x01") + text);
    };

    Project p = SmallProject();
    for (SpiForm form : {SpiForm::V3, SpiForm::V4, SpiForm::V2, SpiForm::V1, SpiForm::Unversioned}) {
        p.spi_form = form;
        p.functions[1].spi_base_dir = form == SpiForm::V3 || form == SpiForm::V4 ? "/build dir" : "";
        spi(SpiText(p));
    }
    dpi(p);
    p.line_info = LineInfo::Packed;
    dpi(p);
    p.line_info = LineInfo::None;
    p.properties = 3;
    p.extra_word = 7;
    dpi(p);
    p = SmallProject();
    p.layout = RecordLayout::Version2;
    dpi(p);
    p.header_form = DpiHeaderForm::Old;
    dpi(p);
    p.layout = RecordLayout::Version3;
    dpi(p);
    p = SmallProject();
    p.header_form = DpiHeaderForm::NewPlain;
    p.header_padding = 24;
    p.strings = StringPlacement::InSegment;
    p.functions[0].src_root_length = 5;
    p.functions[0].extensions = {{0xFEEF, "flow"}, {0xD1F0, "d1"}, {0xDC6A, "dc"}, {0xD777, "skip"}};
    dpi(p);
    p.functions.push_back(p.functions[1]);  // a duplicate key
    dpi(p);
    return 0;
}
