/* call_graph_text.cpp -- the -txtdcg file: direct calls from the call graph,
 * indirect and virtual calls from the value profile, and the statistics of
 * every function, module and the whole program. */
#include "analysis/call_graph_text.h"

#include <cinttypes>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_map>

#include "driver/console.h"
#include "driver/demangle.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/client/call_graph.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/client/dpi_stream.h"
#include "shared/vemtra/tallyfold/assertx.h"

static const char MSG_CORRUPT[] = "%s is corrupt!\n";

static const char NULL_NAME[] = "(null)";      /* an unknown call target */
static const char KIND_INDIRECT[] = ".icall";
static const char KIND_VIRTUAL[] = ".vcall";
static const uint64_t TARGET_VIRTUAL = 0x1;     /* flag bit of a virtual call */

/* The call numbers of a function, a module or the program. */
struct CallStats {
    int functions;        /* functions written */
    int direct;           /* direct calls */
    uint64_t directSum;
    int indirect;         /* call sites with an indirect target (or none) */
    uint64_t indirectSum;
    int virtuals;         /* call sites with a virtual target */
    uint64_t virtualSum;
};

static void addStats(CallStats *to, const CallStats &from)
{
    to->functions += from.functions;
    to->direct += from.direct;
    to->directSum += from.directSum;
    to->indirect += from.indirect;
    to->indirectSum += from.indirectSum;
    to->virtuals += from.virtuals;
    to->virtualSum += from.virtualSum;
}

/* "  <direct> <sum>  <indirect> <sum>  <virtual> <sum>\n", the tail that the
 * three statistics lines share. */
static void writeCallNumbers(FILE *out, const CallStats &stats)
{
    fprintf(out, "  %d %" PRIu64 "  %d %" PRIu64 "  %d %" PRIu64 "\n", stats.direct, stats.directSum,
            stats.indirect, stats.indirectSum, stats.virtuals, stats.virtualSum);
}

uint64_t truncatedCount(double count)
{
    if (!(count > 0.0))
        return 0;
    if (count >= 18446744073709551616.0)
        return UINT64_MAX;
    return static_cast<uint64_t>(count);
}

static std::string displayName(const char *name)
{
    int length = 0;
    return demangleName(name, g_iDemangFlag, &length);
}

/* The first node, in creation order, of every (module, function): the
 * dump's lookup of a dynamic profile pair in the graph. */
class NodeIndex {
public:
    NodeIndex()
    {
        nodes.reserve(VEMTRA_entry_count);
        for (entry *node = VEMTRA_first_entry; node != nullptr; node = node->next)
            if (node->module != nullptr)
                nodes.emplace(key(node->module, node->name), node);
    }
    entry *find(const char *module, const char *name) const
    {
        auto found = nodes.find(key(module, name));
        return found == nodes.end() ? nullptr : found->second;
    }

private:
    static std::string key(const char *module, const char *name)
    {
        std::string text(module);
        text.push_back('\0');
        text.append(name);
        return text;
    }
    std::unordered_map<std::string, entry *> nodes;
};

/* The function line and its direct calls. Fills the function's number,
 * count and direct calls into `node_number`, `count` and `stats`. */
static void writeDirectCalls(FILE *out, const std::string &name, int module, entry *node,
                             int *node_number, uint64_t *count, CallStats *stats)
{
    if (node == nullptr || !(node->flags & VEMTRA_ENTRY_DEFINED)) {
        fprintf(out, "    .function \"%s\" %d 0 0\n", name.c_str(), module);
        return;
    }
    *node_number = static_cast<int>(node->number);
    *count = truncatedCount(node->frequency);
    fprintf(out, "    .function \"%s\" %d %d %" PRIu64 "\n", name.c_str(), module, *node_number, *count);
    const entry *last = vemtra_Entry_Chain_Last(node);
    for (const VEMTRA_CALL_EDGE *edge = last->out_edges; edge != nullptr; edge = edge->next_out) {
        uint64_t calls = truncatedCount(edge->frequency);
        fprintf(out, "        .dcall %d 0 \"%s\" %d %" PRIu64 "\n", stats->direct,
                displayName(edge->callee->name).c_str(), static_cast<int>(edge->site), calls);
        stats->direct++;
        stats->directSum += calls;
    }
}

/* One record per target of each value-profile site of the segment. */
static void writeIndirectCalls(FILE *out, const DPI_SEGMENT *handle, CallStats *stats)
{
    const DPI_S *dpi = handle->segment;
    for (uint32_t site = 0; site < dpi->value_cnt; site++) {
        uint64_t block = dpi->values[site];
        vemtra_Check_Block_Index(block, dpi->block_cnt);
        int line = static_cast<int>(dpi->blocks[block].start_line);
        bool indirect = false, isVirtual = false;
        for (int t = 0; t < VEMTRA_VALUE_TARGETS; t++) {
            const unsigned char *record = dpi->value_tables[site] + t * VEMTRA_VALUE_RECORD_SIZE;
            uint64_t calls = vemtra_Le_Value(record + 8, 8);
            if (calls == 0) {
                if (t == 0) {
                    fprintf(out, "        %s %d %d \"%s\" %d 0\n", KIND_INDIRECT, static_cast<int>(site), 0,
                            NULL_NAME, line);
                    indirect = true;
                }
                break;
            }
            uint64_t count = truncatedCount(static_cast<double>(calls) / static_cast<double>(handle->runs));
            const DPI_FUNC_INFO *target = VEMTRA_Lookup_Func(vemtra_Le_Value(record, 8));
            std::string name = target != nullptr ? displayName(target->function_name) : NULL_NAME;
            bool virtualCall = (vemtra_Le_Value(record + 16, 8) & TARGET_VIRTUAL) != 0;
            fprintf(out, "        %s %d %d \"%s\" %d %" PRIu64 "\n", virtualCall ? KIND_VIRTUAL : KIND_INDIRECT,
                    static_cast<int>(site), t, name.c_str(), line, count);
            if (virtualCall) {
                isVirtual = true;
                stats->virtualSum += count;
            } else {
                indirect = true;
                stats->indirectSum += count;
            }
        }
        stats->indirect += indirect;
        stats->virtuals += isVirtual;
    }
}

static void writeModuleStats(FILE *out, const char *module, int number, const CallStats &stats)
{
    fprintf(out, ".mstats ");
    fprintf(out, "\"%s\" ", module);
    fprintf(out, "%d %d", number, stats.functions);
    writeCallNumbers(out, stats);
}

bool CallGraph(FILE *out)
{
    if (out == nullptr)
        return false;

    /* 1. The first pair. */
    char *file = nullptr, *function = nullptr;
    VEMTRA_Get_First_File_Function_Pair(pgofDPIFile, &file, &function);
    if (file == nullptr || function == nullptr) {
        fprintf(stderr, MSG_CORRUPT, g_lpszDPIFileName);
        tvx_Exit(1);
    }

    /* 2. The graph. */
    int anyFlag0 = 0;
    VEMTRA_Create_Call_Graph(g_lpszDPIFileName, g_lpszSPIFileName, &anyFlag0, pgofDPIFile);
    uint32_t count = pgofDPIFile->segment_count;
    if (count == 0)
        return true;
    NodeIndex index;

    /* 3. One function per pair. A pair without a segment is not passed:
     * the rest of the walk sees it again and writes nothing. */
    CallStats module = {}, totals = {};
    const char *moduleName = nullptr;
    int modules = 0, moduleNumber = -1;
    for (uint32_t i = 0; i < count; i++) {
        DPI_SEGMENT *handle = VEMTRA_Get_Segment(pgofDPIFile, g_lpszDPIFileName, file, function);
        if (handle == nullptr)
            continue;
        if (moduleName == nullptr || strcmp(file, moduleName) != 0) {
            if (moduleName != nullptr) {
                writeModuleStats(out, moduleName, moduleNumber, module);
                addStats(&totals, module);
            }
            moduleNumber = modules++;
            fprintf(out, ".module %d \"%s\"\n", moduleNumber, file);
            module = CallStats{};
            moduleName = file;
        }

        CallStats calls = {};
        calls.functions = 1;
        std::string name = displayName(function);
        int nodeNumber = 0;
        uint64_t frequency = 0;
        writeDirectCalls(out, name, moduleNumber, index.find(file, function), &nodeNumber, &frequency, &calls);
        writeIndirectCalls(out, handle, &calls);
        fprintf(out, "    .funstats \"%s\" %d %d %" PRIu64, name.c_str(), moduleNumber, nodeNumber, frequency);
        writeCallNumbers(out, calls);
        addStats(&module, calls);

        VEMTRA_Free_Segment(handle);
        VEMTRA_Get_Next_File_Function_Pair(pgofDPIFile, &file, &function);
    }

    /* 4. The last module and the totals. */
    if (moduleName != nullptr) {
        writeModuleStats(out, moduleName, moduleNumber, module);
        addStats(&totals, module);
    }
    fprintf(out, ".tstats ");
    fprintf(out, "%d %d", modules, totals.functions);
    writeCallNumbers(out, totals);
    return true;
}
