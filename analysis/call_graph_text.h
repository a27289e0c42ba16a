/* call_graph_text.h -- the dynamic call graph as a line-oriented text file
 * (-txtdcg).
 *
 *   .module <n> "<file>"
 *       .function "<name>" <module> <node number> <calls>
 *           .dcall <i> 0 "<callee>" <site> <calls>
 *           .icall|.vcall <site index> <target index> "<target>" <line> <calls>
 *       .funstats "<name>" <module> <node number> <calls>  <direct> <sum>  <indirect> <sum>  <virtual> <sum>
 *   .mstats "<file>" <module> <functions>  <direct> <sum>  <indirect> <sum>  <virtual> <sum>
 *   .tstats <modules> <functions>  <direct> <sum>  <indirect> <sum>  <virtual> <sum>
 *
 * Modules and functions follow the dynamic profile's (file, function)
 * pairs; direct calls come from the call graph, indirect and virtual calls
 * from the value-profile sites of each function's segment.
 */
#ifndef VEMCOV_ANALYSIS_CALL_GRAPH_TEXT_H
#define VEMCOV_ANALYSIS_CALL_GRAPH_TEXT_H

#include <cstdint>
#include <cstdio>

/* Builds the call graph from the run's static and dynamic profiles and
 * writes it to `out`. Returns false only for a null stream. A dynamic
 * profile without functions ends the run with "%s is corrupt!\n" and status
 * 1; a call site whose block lies outside its segment ends it with the
 * block-index check. */
bool CallGraph(FILE *out);

/* A stored count as the file prints it: truncated to an unsigned 64-bit
 * integer; 0 for NaN and negative values, the greatest value for counts
 * beyond it (a profile of 0 runs divides by zero). */
uint64_t truncatedCount(double count);

#endif
