/* component_file.h -- the component list file (-comp): the modules of
 * interest and the infeasible-code markers it adds to those of the options.
 *
 * Each line of the file is one of
 *   ONE_LINE_NOTFEASIBLE: "marker"   appended to one_line_disable
 *   BEGIN_NOTFEASIBLE: "marker"      appended to start_disable_block
 *   END_NOTFEASIBLE: "marker"        appended to end_disable_block
 *   anything else                    a module pattern, kept exactly as written
 * A pattern that begins with "~" excludes the modules whose file name holds
 * the rest of it; any other pattern includes those whose name holds it.
 */
#ifndef VEMCOV_DRIVER_COMPONENT_FILE_H
#define VEMCOV_DRIVER_COMPONENT_FILE_H

#include <string>
#include <vector>

/* The module patterns of the component file, in file order (carriage
 * returns and blanks included). Empty when no file was given. */
extern std::vector<std::string> moduleName;

/* Reads the component file at `path` into moduleName and the three marker
 * lists (after the markers of the options), setting
 * Infeasible_markers_specified for any marker line. Does nothing when
 * `path` is null. Returns 0; every error prints its message to standard
 * error and ends the run with status 1. */
int getModuleNames(const char *path);

/* 1 when the module `fileName` is of interest: no patterns at all, or some
 * inclusion pattern occurs in the name and no exclusion pattern's rest
 * does. A list of exclusions only selects nothing. */
int isInComponents(const char *fileName);

/* 1, after printing an error on standard error, when one marker string
 * serves two of the three roles (one-line, start, end); else 0. */
int check_NFmarkers_intersect();

#endif
