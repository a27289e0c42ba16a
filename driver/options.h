/* options.h -- the command-line parser that fills the run settings. */
#ifndef VEMCOV_DRIVER_OPTIONS_H
#define VEMCOV_DRIVER_OPTIONS_H

/* Scans the arguments once, left to right, into the run settings
 * (settings.h), applies the owner defaults, the -ref overrides and the
 * -nopartial colour, and prints the banner and "\n" to standard error.
 * Returns true when the run may go on; false when the caller must print the
 * banner and the usage text and end with status 1 (a help word, an unknown
 * option, or a missing value of the options that fall back on usage).
 * "-helpx" prints the External options text and ends with status 1; a
 * missing value of the other options prints its own message and ends with
 * status 1; running out of memory ends with status 2. */
bool bParseCommandLine(int argc, char **argv);

#endif
