/* demangle.h -- display names of the profiled program's functions, and the
 * folding of file names on a Windows host. */
#ifndef VEMCOV_DRIVER_DEMANGLE_H
#define VEMCOV_DRIVER_DEMANGLE_H

/* The display form of the profile function name `name`: for a name that
 * begins with "_Z" and that the platform's C++ demangler accepts, the
 * demangled text (function name with its argument types), with its length
 * plus one stored in *length. Any other name (null, not mangled, rejected)
 * is returned unchanged with *length set to 0. A demangled text lives in a
 * process-wide buffer that the next call reuses: callers that keep it copy
 * it. `flag` (-demang) is accepted and not consulted: names are always
 * demangled in full here. */
const char *demangleName(const char *name, int flag, int *length);

/* Folds the file name in place for a Windows host (letters made upper
 * case); does nothing on other hosts. */
void NormalizeName(char *name);

#endif
