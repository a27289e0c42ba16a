/* banner.h -- the product texts and the two-line banner that opens every
 * run. */
#ifndef VEMCOV_DRIVER_BANNER_H
#define VEMCOV_DRIVER_BANNER_H

#include <cstdio>

/* Kinds of package a banner names: 0 decides from the info string (the
 * Fortran package first when it names Fortran, then the other language),
 * 1 the C/C++ package, 2 the Fortran package. */
enum {
    BANNER_KIND_DEFAULT = 0,
    BANNER_KIND_C = 1,
    BANNER_KIND_FORTRAN = 2
};

/* Writes the info line (with "Package ID: <id>" when the compiler package
 * of the kind's language is installed, and with `version` first when it is
 * not null; cut to 319 characters) and the protection line to `stream`, then
 * flushes it. */
void BANNER_Print(const char *version, int kind, FILE *stream);

/* The package identifier of the installed compiler package of the language
 * (Fortran when `fortran` is nonzero, else C/C++): the compiler driver is
 * searched along PATH, and the identifier is read from the "Package ID:"
 * line of the package's support file. Empty text when anything is missing.
 * The text lives in a buffer shared until the next call. */
const char *BANNER_Version_Package_Id(int fortran);

/* The tool's description alone. */
const char *VERSION_Get_Product_Name();

/* The first banner line as a format: one "%s" for the package text. */
const char *VERSION_Get_Info_String();

/* The second banner line. */
const char *VERSION_Get_Protection_String();

#endif
