// call_graph_chains.cpp -- how the call graph's node table fills:
//   call_graph_chains <vemtra.spi> <vemtra.dpi>
// Builds the graph as the -txtdcg dump does and prints the build time, the
// number of nodes, and the chain lengths of the 991 buckets: the longest,
// the mean over used buckets, and the mean number of key comparisons a
// lookup of an existing node makes.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "shared/vemtra/client/call_graph.h"
#include "shared/vemtra/client/dpi_file.h"

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: %s <spi file> <dpi file>\n", argv[0]);
        return 1;
    }
    DPI_FILE *dpi = VEMTRA_Open_Dpi_File(argv[2]);
    if (dpi == nullptr) {
        fprintf(stderr, "cannot open %s\n", argv[2]);
        return 1;
    }
    auto start = std::chrono::steady_clock::now();
    int flag0 = 0;
    VEMTRA_Create_Call_Graph(argv[2], argv[1], &flag0, dpi);
    double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    /* Only the first node of a same-key chain stands in its bucket. */
    std::vector<uint64_t> chain(VEMTRA_ADDRESS_BUCKETS, 0);
    std::vector<bool> follower(VEMTRA_entry_count, false);
    for (entry *node = VEMTRA_first_entry; node != nullptr; node = node->next)
        for (entry *same = node->next_same_key; same != nullptr; same = same->next_same_key)
            follower[same->number] = true;
    uint64_t heads = 0;
    for (entry *node = VEMTRA_first_entry; node != nullptr; node = node->next)
        if (!follower[node->number]) {
            chain[node->key_hash % VEMTRA_ADDRESS_BUCKETS]++;
            heads++;
        }
    uint64_t used = 0, longest = 0, probes = 0;
    for (uint64_t length : chain) {
        used += length > 0;
        longest = std::max(longest, length);
        probes += length * (length + 1) / 2;  // finding each member of the chain
    }
    printf("graph build: %.3f s, %u nodes\n", took, VEMTRA_entry_count);
    printf("buckets used: %llu of %d; longest chain %llu; mean chain %.1f; mean comparisons per lookup %.1f\n",
           static_cast<unsigned long long>(used), VEMTRA_ADDRESS_BUCKETS, static_cast<unsigned long long>(longest),
           used ? double(heads) / double(used) : 0.0, heads ? double(probes) / double(heads) : 0.0);
    return 0;
}
