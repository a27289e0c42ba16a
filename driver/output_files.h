/* output_files.h -- the text and XML files the options ask for: opened with
 * their frames before the profiles are read, closed at the end of the run.
 */
#ifndef VEMCOV_DRIVER_OUTPUT_FILES_H
#define VEMCOV_DRIVER_OUTPUT_FILES_H

#include <cstdio>

/* The driver's own output streams; each is null when its option was not
 * given. The two "full" block files are the run-state streams outxml and
 * outtxt. */
struct OutputFiles {
    FILE *xmlFunctions;  /* -xmlfcvrg */
    FILE *txtFunctions;  /* -txtfcvrg */
    FILE *xmlBlocks;     /* -xmlbcvrg */
    FILE *txtBlocks;     /* -txtbcvrg */
    FILE *callGraph;     /* -txtdcg */
};

/* Opens every requested file for writing, in the order -xmlfcvrg,
 * -txtfcvrg, -xmlbcvrgfull, -txtbcvrgfull, -xmlbcvrg, -txtbcvrg, -txtdcg,
 * and writes the PROJECT opening of the three XML files. A file that cannot
 * be opened ends the run with status 1 ("Couldn't open file %s for
 * output!\n"). */
void openOutputFiles(OutputFiles *files);

/* Writes "</PROJECT>\n" to the three XML files and closes every open file;
 * a file whose writes failed ends the run ("ERROR: cannot write %s: %s",
 * status 1). */
void closeOutputFiles(OutputFiles *files);

#endif
