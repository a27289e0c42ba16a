/* fast_coverage.h -- the four coverage files written straight from the
 * dynamic profile, without the HTML report.
 *
 *   -txtfcvrg  Covered Functions in File: "<file>"
 *              "<name>"\t<freq>\t<blocks>\t<covered>\t<percent>
 *   -xmlfcvrg  <MODULE name = "<file>">
 *              <FUNCTION name="<name>" freq="<freq>">
 *              <BLOCKS total=".." covered=".." coverage="..%"></BLOCKS>
 *              </FUNCTION> ... </MODULE>
 *   -txtbcvrg  Covered Functions in File: "<file>"
 *              function - <name>\t<freq>, then <inst>\t<line>\t<col>\t<count>
 *   -xmlbcvrg  <MODULE ...><FUNCTION ...><BLOCK ..><INSTANCE ..> ... </MODULE>
 *
 * Modules and functions follow the dynamic profile's (file, function)
 * pairs. The function files list only functions with a covered block, the
 * XML block file only functions with an executed block.
 */
#ifndef VEMCOV_ANALYSIS_FAST_COVERAGE_H
#define VEMCOV_ANALYSIS_FAST_COVERAGE_H

#include <cstdio>

/* The kinds of fast file, in the numbering the run driver passes. */
const int FAST_TXT_FUNCTIONS = 1;  /* -txtfcvrg */
const int FAST_TXT_BLOCKS = 2;     /* -txtbcvrg */
const int FAST_XML_FUNCTIONS = 3;  /* -xmlfcvrg */
const int FAST_XML_BLOCKS = 4;     /* -xmlbcvrg */

/* Writes the file of `kind` to `out` from the run's dynamic profile, for
 * the modules of interest, with the infeasible-code markers applied when any
 * were given. A pair whose module is not of interest or that has no segment
 * is not passed: the rest of the walk sees it again and writes nothing more.
 * A dynamic profile without functions ends the run with "%s is corrupt!\n"
 * and status 1. Returns true. */
bool bOutputFunctionBlockFastCoverage(FILE *out, int kind);

#endif
