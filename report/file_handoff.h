/* file_handoff.h -- a thread that hands finished page bytes to the file
 * system (on two processors, and with -j). Making a page is the run's work; opening, writing, cutting
 * and closing its file is the kernel's, and on a machine with two
 * processors the two can go on side by side. A page is made into a stream
 * whose bytes are queued for this thread, which writes every file in the
 * order its pieces came, so the files come out as when the run writes
 * them itself. A file that cannot be opened or written ends the run from
 * this thread, with the message the run would have printed.
 */
#ifndef VEMCOV_REPORT_FILE_HANDOFF_H
#define VEMCOV_REPORT_FILE_HANDOFF_H

#include <cstdio>
#include <string>
#include <vector>

/* What a page's maker prints when its file cannot be opened: `format`
 * with `argument` and, for a second "%s", the system's error text. */
struct OpenFailure {
    const char *format;
    std::string argument;
};

/* Starts the thread; until fileHandoffFinish, handedOffPage gives streams
 * whose files it writes. The standard output and error, and the streams
 * in `alsoDiverted` (null ones are left), are replaced until then by
 * streams whose bytes reach them through the thread, in order with the
 * pages. With `shareWriting`, a maker writes its next page itself while
 * the thread is behind: faster on two processors, but a run that fails on
 * the thread may then leave pages made after the one that failed. When
 * the system refuses a thread, nothing changes. */
void fileHandoffStart(bool shareWriting, const std::vector<FILE **> &alsoDiverted = {});

/* Returns when every page handed off so far is written and closed; the
 * thread stops. Nothing when it was not started. */
void fileHandoffFinish();

/* Returns when every page handed off so far is written and closed, and
 * what the run printed meanwhile is out: a file the run then writes
 * itself comes after them, as when it writes every file. */
void fileHandoffWait();

/* A stream for the page at `path`: its bytes are written to that file
 * (opened as checked_open_rewritable opens it) on the hand-off thread.
 * Close it with checked_close_rewritten (`name` is the file's name in the
 * messages of a failed write, as there). Null when the thread is not
 * running, or, when makers share the writing, when three quarters of its
 * ring still wait to be written: the maker then writes the page itself, so
 * that on two processors the writing, the larger part of the work, is
 * shared rather than waited for. */
FILE *handedOffPage(const std::string &path, const std::string &name, OpenFailure failure);

/* Queues the `length` bytes at `bytes` for the page of `stream` (the
 * calling thread's latest from handedOffPage), after what the stream
 * holds, copying them straight into the thread's queue rather than
 * through the stream's own buffer, which would cut them into pieces and
 * copy them twice. False, and nothing done, for any other stream. */
bool handOffPageBytes(FILE *stream, const char *bytes, size_t length);

/* While pages are handed off: a stream whose bytes reach `real`, a file
 * the run opened itself and writes module by module, through the thread
 * in order with the pages (`real` itself otherwise). Closing it closes
 * `real` there, with checked_close_output's check (`name` in its message). */
FILE *handedOffStream(FILE *real, const std::string &name);

#endif
