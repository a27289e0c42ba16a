/* images.h -- writing the report's images into the report directory. */
#ifndef VEMCOV_REPORT_IMAGES_H
#define VEMCOV_REPORT_IMAGES_H

/* File names of the images, as the pages refer to them (kept as they are,
 * not upper-cased like page names). */
extern const char HOME_IMAGE[];     /* "__Home.gif" */
extern const char HELP_IMAGE[];     /* "__Help.gif" */
extern const char LOGO_IMAGE[];     /* "__TarskR.gif" */
extern const char SPACER_IMAGE[];   /* "__Spacer.gif" */

/* Writes the four images, in binary, into the report directory: home, help,
 * logo, spacer. A byte that cannot be written prints "ERR at %d %d\n" to
 * standard output and the writing goes on. A file that cannot be created
 * prints its message to standard error and the result is false. */
bool bWriteReportImages();

#endif
