/* naming.h -- names of the report's pages, and the text helpers the pages
 * share.
 *
 * A page name is derived from a source path or a fixed base name: the last
 * "." becomes "_", every "/", ":" and "\" becomes "_", "." and the output
 * extension are appended, and every lower-case ASCII letter is made upper
 * case. A name longer than 255 bytes is cut (see shortenLongName). The Dir forms put "CodeCoverage/" in front and apply the rules only
 * after it, so the directory keeps its case.
 *
 * Every name function returns a pointer into one buffer shared by all of
 * them: the name stays valid only until the next call of any of them, so a
 * caller uses it or copies it at once.
 */
#ifndef VEMCOV_REPORT_NAMING_H
#define VEMCOV_REPORT_NAMING_H

#include <cstddef>
#include <cstdio>

/* The report directory, in the current directory. */
extern const char REPORT_DIR[];   /* "CodeCoverage" */

/* Base names of the fixed pages of the report. */
extern const char ROOT_PAGE[];             /* "Code_Coverage": the root frameset */
extern const char SUMMARY_PAGE[];          /* "__Code_Coverage" */
extern const char COVERED_FILES_PAGE[];    /* "__Covered_Files_Coverage" */
extern const char UNCOVERED_FILES_PAGE[];  /* "__Uncovered_Files_Coverage" */
extern const char TOOLBAR_PAGE[];          /* "__ToolBar" */
extern const char HELP_PAGE[];             /* "__Help" */

/* `name` as a page linked from a page of the report directory. */
const char *getHTMLname(const char *name, const char *ext);

/* "<name>_<number>": a page generated per sort order; `number` is the sort
 * order + 3. */
const char *getVerHTMLname(const char *name, int number, const char *ext);

/* "<path>_SRC": the annotated listing of a source file, as a link. */
const char *getSrcHTMLname(const char *path, const char *ext);

/* "CodeCoverage/<name>": for creating a page in the report directory. */
const char *getDirHTMLname(const char *name, const char *ext);

/* The same as getDirHTMLname; used for links from the root page. */
const char *getDirSlashHTMLname(const char *name, const char *ext);

/* "CodeCoverage/<name>_<number>": for creating a per-order page. */
const char *getDirVerHTMLname(const char *name, int number, const char *ext);

/* The same as getDirVerHTMLname; used for links from the root page. */
const char *getDirSlashVerHTMLname(const char *name, int number, const char *ext);

/* "CodeCoverage/<path>_SRC": for creating a file's annotated listing. */
const char *getDirSrcHTMLname(const char *path, const char *ext);

/* In place: a page name (one path component, ending in "." and an
 * extension of `extLength` bytes) longer than 255 bytes becomes a prefix of
 * itself, "_", 16 upper-case hexadecimal digits of a 64-bit FNV-1a hash of
 * the whole name, and its extension: 255 bytes in all. A name that fits is
 * left as it is. */
void shortenLongName(char *name, size_t extLength);

/* Capacity in bytes of the shared name buffer (4096 until a name needs
 * more, then the smallest power of two above that need). */
size_t reportNameBufferSize();

/* The part of `path` after its last "/", or the whole path: the name a
 * page shows for a source file. */
const char *pathBaseName(const char *path);

/* In place: every "/", ":" and "\" of `text` becomes "_". */
void hyphenize(char *text);

/* In place: every `from` character of `text` becomes `to`. Returns `text`
 * (a null or empty text is returned unchanged). */
char *strtrns(char *text, char from, char to);

/* Writes `text` with "<" as "&lt;" and '"' as "&quot;"; "&" and ">" are
 * written as they are. A null or empty text writes nothing. */
void printHTMLstr(FILE *stream, const char *text);

#endif
