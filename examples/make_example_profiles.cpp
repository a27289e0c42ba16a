// make_example_profiles.cpp -- writes the static and dynamic profiles that a
// build of examples/src for profile-guided optimisation would leave after
// two runs of the ledger program, so that the example needs no compiler
// suite.
//
// The two runs read these ledgers on standard input:
//   run 1: "bolts 120 0.10", "nuts 3 0.05", "washers 40 0.02"
//   run 2: "gears 8 12.50", "springs x 0.40", "bearings 2 7.25", "cables 15 3.10"
// Every count below is what those runs execute, summed over both. A block
// is placed at the statement where it begins; the generator finds each
// statement's column in the sources themselves and stops when a source no
// longer holds it, so the profile cannot drift from the sources.
//
// Usage: make_example_profiles <absolute source dir> <output dir>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tests/support/profile_writer.h"

namespace {

class Sources {
public:
    explicit Sources(const std::string &dir) : dir_(dir) {}

    std::string Path(const std::string &file) const { return dir_ + "/" + file; }

    // The block of `count` executions that begins where `text` first occurs
    // on `line` of `file`.
    testsupport::BlockSpec At(const std::string &file, uint32_t line, const std::string &text, uint64_t count)
    {
        const std::vector<std::string> &lines = Lines(file);
        size_t column = line >= 1 && line <= lines.size() ? lines[line - 1].find(text) : std::string::npos;
        if (column == std::string::npos) {
            fprintf(stderr, "make_example_profiles: %s:%u does not hold \"%s\"\n", file.c_str(), line, text.c_str());
            exit(1);
        }
        return testsupport::BlockSpec{count, line, static_cast<uint32_t>(column + 1)};
    }

private:
    const std::vector<std::string> &Lines(const std::string &file)
    {
        auto found = lines_.find(file);
        if (found != lines_.end())
            return found->second;
        std::ifstream in(Path(file));
        if (!in) {
            fprintf(stderr, "make_example_profiles: cannot read %s\n", Path(file).c_str());
            exit(1);
        }
        std::vector<std::string> &lines = lines_[file];
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }

    std::string dir_;
    std::map<std::string, std::vector<std::string>> lines_;
};

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: %s <absolute source dir> <output dir>\n", argv[0]);
        return 1;
    }
    Sources src(argv[1]);
    const std::string out = argv[2];

    testsupport::Project project;
    project.runs = 2;

    // main.cpp: seven ledger lines, one of them malformed.
    project.Add(src.Path("main.cpp"), "main", 9)
        .Blocks({src.At("main.cpp", 11, "std::vector", 2), src.At("main.cpp", 14, "std::getline", 9),
                 src.At("main.cpp", 15, "Item item", 7), src.At("main.cpp", 17, "items.push_back", 6),
                 src.At("main.cpp", 19, "++bad", 1), src.At("main.cpp", 21, "if (bad", 2),
                 src.At("main.cpp", 22, "fprintf", 1), src.At("main.cpp", 23, "printReport", 2)});

    // ledger.cpp: a static helper, a line that cannot run (its one-line
    // marker makes it infeasible), a branch no ledger takes, and a function
    // that no caller is left for (it has no segment: never called).
    const std::string string_ref = "RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
    project.Add(src.Path("ledger.cpp"), "_ZL9allDigits" + string_ref, 7, 'L')
        .Blocks({src.At("ledger.cpp", 9, "for", 7), src.At("ledger.cpp", 10, "if", 11),
                 src.At("ledger.cpp", 11, "return false", 1), src.At("ledger.cpp", 12, "return", 6)});
    project.Add(src.Path("ledger.cpp"), "_Z13parseQuantity" + string_ref + "Pb", 15)
        .Blocks({src.At("ledger.cpp", 17, "*ok", 7), src.At("ledger.cpp", 19, "return 0", 1),
                 src.At("ledger.cpp", 20, "int quantity", 6), src.At("ledger.cpp", 22, "quantity =", 10),
                 src.At("ledger.cpp", 23, "return", 6)});
    project.Add(src.Path("ledger.cpp"), "_Z9parseItem" + string_ref + "P4Item", 26)
        .Blocks({src.At("ledger.cpp", 28, "if", 7), src.At("ledger.cpp", 29, "return false", 0),
                 src.At("ledger.cpp", 30, "size_t first", 7), src.At("ledger.cpp", 33, "return false", 0),
                 src.At("ledger.cpp", 34, "bool ok", 7)});
    project.Add(src.Path("ledger.cpp"), "_Z15parseLegacyItem" + string_ref + "P4Item", 42)
        .Blocks({src.At("ledger.cpp", 44, "item->name", 0)})
        .OnlyInSpi();

    // ledger.h: template instances. Both Tally instances share positions;
    // mean() gives its condition and both arms of the "?:" the position of
    // its return statement, and the empty-tally arm never runs.
    project.Add(src.Path("ledger.h"), "_Z6largerIiET_S0_S0_", 16)
        .Blocks({src.At("ledger.h", 18, "a <", 6), src.At("ledger.h", 18, "b :", 3), src.At("ledger.h", 18, "a;", 3)});
    project.Add(src.Path("ledger.h"), "_ZN5TallyIiE3addEi", 25).Blocks({src.At("ledger.h", 27, "sum_", 6)});
    project.Add(src.Path("ledger.h"), "_ZN5TallyIdE3addEd", 25).Blocks({src.At("ledger.h", 27, "sum_", 6)});
    for (const char *mean : {"_ZNK5TallyIiE4meanEv", "_ZNK5TallyIdE4meanEv"})
        project.Add(src.Path("ledger.h"), mean, 30)
            .Blocks({src.At("ledger.h", 30, "return", 2), src.At("ledger.h", 30, "return", 0),
                     src.At("ledger.h", 30, "return", 2)});

    // report.cpp: six items printed; the size check lies in a region marked
    // as debugging code, so its blocks are infeasible.
    project.Add(src.Path("report.cpp"), "_ZL9stockMarki", 7, 'L')
        .Blocks({src.At("report.cpp", 9, "quantity <", 6), src.At("report.cpp", 9, "\"low\"", 2),
                 src.At("report.cpp", 9, "\"ok\"", 4)});
    project.Add(src.Path("report.cpp"), "_ZL9printLineRK4Item", 12, 'L')
        .Blocks({src.At("report.cpp", 14, "printf", 6)});
    project.Add(src.Path("report.cpp"), "_Z11printReportRKSt6vectorI4ItemSaIS0_EE", 17)
        .Blocks({src.At("report.cpp", 19, "Tally", 2), src.At("report.cpp", 22, "items)", 8),
                 src.At("report.cpp", 23, "printLine", 6), src.At("report.cpp", 29, "if", 2),
                 src.At("report.cpp", 30, "fprintf", 0), src.At("report.cpp", 34, "printf", 2)});

    // export.cpp: not called yet; its blocks are the static profile's only.
    project.Add(src.Path("export.cpp"), "_Z8writeCsvP8_IO_FILERKSt6vectorI4ItemSaIS2_EE", 7)
        .Blocks({src.At("export.cpp", 9, "fprintf", 0), src.At("export.cpp", 10, "items)", 0),
                 src.At("export.cpp", 11, "fprintf", 0)})
        .OnlyInSpi();

    if (!testsupport::WriteBytes(out + "/vemtra.spi", testsupport::SpiText(project)) ||
        !testsupport::WriteBytes(out + "/vemtra.dpi", testsupport::DpiBytes(project))) {
        fprintf(stderr, "%s: cannot write the profiles into %s\n", argv[0], out.c_str());
        return 1;
    }
    return 0;
}
