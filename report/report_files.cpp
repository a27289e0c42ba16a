/* report_files.cpp -- the report's place. */
#include "report/report_files.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>

#include "report/file_handoff.h"
#include "shared/vemtra/tallyfold/checked_io.h"

/* "" for the current directory, else the directory and a "/". */
static std::string reportRoot;

bool setReportRoot(const char *dir)
{
    reportRoot.clear();
    if (dir == nullptr || dir[0] == '\0')
        return true;
    std::string path = dir;
    /* Each component in turn, as "mkdir -p" does. */
    for (size_t at = 1; at <= path.size(); ++at) {
        if (at < path.size() && path[at] != '/')
            continue;
        std::string prefix = path.substr(0, at);
        struct stat status;
        if (stat(prefix.c_str(), &status) == 0) {
            if (!S_ISDIR(status.st_mode)) {
                errno = ENOTDIR;
                return false;
            }
            continue;
        }
        if (mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST)
            return false;
    }
    reportRoot = path + "/";
    return true;
}

FILE *openReportFile(const char *name)
{
    /* Not emptied on opening: a run over an earlier report writes over the
     * old bytes, which needs no new disk blocks or cache pages. Emptied,
     * every file's blocks were freed first (and discarded, on a disk
     * mounted so): a re-run of the 2.65-million-line report took 3 to 8 s
     * that way, under 1.1 s this way. A file the run writes itself comes
     * after the pages it handed off, as when it writes every file. */
    fileHandoffWait();
    return checked_open_rewritable((reportRoot + name).c_str());
}

FILE *openPageFile(const char *name, const OpenFailure &failure)
{
    /* As large as the buffer the stream would make for itself: the page
     * writer hands it larger pieces, which then go to the file directly. */
    static thread_local char buffer[1 << 12];
    const std::string path = reportRoot + name;
    FILE *page = handedOffPage(path, name, failure);
    if (page == nullptr)
        page = checked_open_rewritable(path.c_str());
    if (page == nullptr) {
        fprintf(stderr, failure.format, failure.argument.c_str(), strerror(errno));
        return nullptr;
    }
    setvbuf(page, buffer, _IOFBF, sizeof buffer);
    return page;
}

int makeReportDir(const char *name, unsigned mode)
{
    return mkdir((reportRoot + name).c_str(), mode);
}
