// hostile_inputs.cpp -- writes the inputs on which a careless reader or
// sort turns quadratic or runs out of memory:
//   hostile_inputs <kind> <dir> <n>
// kinds:
//   sort       n never-called functions of one file whose block counts are
//              laid out against the lists' middle-pivot quicksort
//   addresses  n segments that share one function address
//   blocks     one function of n blocks whose positions come shuffled
//   line       one function of n blocks on one source line, columns shuffled
//   bomb       n segments that all name one string of n x 512 bytes that
//              runs to the end of the file without a NUL
// <dir> must be absolute (sources are recorded by their path); it receives
// vemtra.spi, vemtra.dpi and the sources.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/profile_writer.h"

using testsupport::Project;

namespace {

// McIlroy's adversary ("A Killer Adversary for Quicksort"): values are left
// undecided ("gas") until a comparison needs them, and decided so that the
// sort's pivots keep being the smallest of their range.
struct Adversary {
    std::vector<int> value;
    int gas;
    int candidate = -1;
    int solid = 0;

    explicit Adversary(int n) : value(n, n), gas(n) {}
    void freeze(int x) { value[x] = solid++; }
    bool before(int x, int y)
    {
        if (value[x] == gas && value[y] == gas)
            freeze(x == candidate ? x : y);
        if (value[x] == gas)
            candidate = x;
        else if (value[y] == gas)
            candidate = y;
        return value[x] < value[y];
    }
};

// The lists' sort as it was before the heap-sort fallback: a quicksort with
// the middle entry as pivot, the shorter part by recursion.
template <class Before>
void middlePivotQuicksort(std::vector<int> &items, int low, int high, Before &before)
{
    while (low < high) {
        int pivot = items[low + (high - low) / 2];
        int i = low, j = high;
        while (i <= j) {
            while (before(items[i], pivot))
                ++i;
            while (before(pivot, items[j]))
                --j;
            if (i <= j)
                std::swap(items[i++], items[j--]);
        }
        if (j - low < high - i) {
            middlePivotQuicksort(items, low, j, before);
            low = i;
        } else {
            middlePivotQuicksort(items, i, high, before);
            high = j;
        }
    }
}

bool write(const std::string &path, const std::string &bytes)
{
    if (testsupport::WriteBytes(path, bytes))
        return true;
    fprintf(stderr, "cannot write %s\n", path.c_str());
    return false;
}

bool writeProject(const std::string &dir, const Project &p)
{
    return write(dir + "/vemtra.spi", testsupport::SpiText(p)) && write(dir + "/vemtra.dpi", testsupport::DpiBytes(p));
}

// The block-count sorts of the uncovered list start from the list sorted by
// name in descending order; position p then holds function n-1-p.
bool sortKind(const std::string &dir, int n)
{
    Adversary adversary(n);
    std::vector<int> items(n);
    for (int i = 0; i < n; ++i)
        items[i] = i;
    auto before = [&](int x, int y) { return adversary.before(x, y); };
    middlePivotQuicksort(items, 0, n - 1, before);

    std::string source;
    Project p;
    const std::string file = dir + "/sorted.c";
    for (int f = 0; f < n; ++f) {
        char name[32];
        snprintf(name, sizeof name, "f%07d", f);
        source += std::string("void ") + name + "(void) {}\n";
        p.Add(file, name, static_cast<uint32_t>(f + 1)).OnlyInSpi().block_count = adversary.value[n - 1 - f] + 1;
    }
    // One function that ran, so the file has a listing.
    p.Add(file, "ran", 1).Blocks({{1, 1, 1}});
    return write(file, source) && writeProject(dir, p);
}

bool addressesKind(const std::string &dir, int n)
{
    Project p;
    for (int f = 0; f < n; ++f)
        p.Add(dir + "/a.c", "f" + std::to_string(f), 1).Blocks({{1, 1, 1}}).Address(0x401000).OnlyInDpi();
    return write(dir + "/vemtra.spi", "") && write(dir + "/vemtra.dpi", testsupport::DpiBytes(p));
}

bool blocksKind(const std::string &dir, int n)
{
    // The full road reads the source: n / 2 + 1 lines.
    std::string source;
    for (int line = 0; line <= n / 2; ++line)
        source += "x = 1;\n";
    if (!write(dir + "/blocks.c", source))
        return false;
    std::vector<testsupport::BlockSpec> blocks;
    for (int b = 0; b < n; ++b)
        blocks.push_back({static_cast<uint64_t>(b % 3), static_cast<uint32_t>(1 + b / 2), static_cast<uint32_t>(1 + b % 2)});
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(1));
    Project p;
    p.Add(dir + "/blocks.c", "f", 1).Blocks(blocks);
    return writeProject(dir, p);
}

bool lineKind(const std::string &dir, int n)
{
    std::vector<testsupport::BlockSpec> blocks;
    for (int b = 0; b < n; ++b)
        blocks.push_back({static_cast<uint64_t>(b % 3), 1, static_cast<uint32_t>(1 + b)});
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(1));
    Project p;
    const std::string file = dir + "/line.c";
    p.Add(file, "f", 1).Blocks(blocks);
    return write(file, std::string(n + 1, 'x') + "\n") && writeProject(dir, p);
}

bool bombKind(const std::string &dir, int n)
{
    return write(dir + "/vemtra.spi", "") &&
           write(dir + "/vemtra.dpi", testsupport::DpiWithOneLongName(n, static_cast<size_t>(n) * 512));
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 4 || argv[2][0] != '/') {
        fprintf(stderr, "usage: %s sort|addresses|blocks|line|bomb <absolute dir> <n>\n", argv[0]);
        return 1;
    }
    const std::string kind = argv[1], dir = argv[2];
    const int n = atoi(argv[3]);
    bool written = kind == "sort"        ? sortKind(dir, n)
                   : kind == "addresses" ? addressesKind(dir, n)
                   : kind == "blocks"    ? blocksKind(dir, n)
                   : kind == "line"      ? lineKind(dir, n)
                   : kind == "bomb"      ? bombKind(dir, n)
                                         : false;
    return written ? 0 : 1;
}
