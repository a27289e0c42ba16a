/* html5_page.cpp -- the modern view's page buffer. */
#include "report/html5_page.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "report/file_handoff.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/process_exit.h"

void Html5Page::text(const char *value, size_t length)
{
    static const EscapeSet escapes{{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
    out_.putEscaped(value, length, escapes);
}

const EscapeSet Html5Page::CONTENT_ESCAPES{{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}};

void Html5Page::text(const char *value)
{
    if (value != nullptr)
        text(value, strlen(value));
}

static FILE *createPage(const std::string &path)
{
    static const char CANNOT_WRITE[] = "ERROR: cannot write %s: %s\n";
    FILE *file = handedOffPage(path, path, {CANNOT_WRITE, path});
    if (file == nullptr)
        file = checked_open_rewritable(path.c_str());
    if (file == nullptr) {
        fprintf(stderr, CANNOT_WRITE, path.c_str(), strerror(errno));
        vemtra_Process_Exit(1);
    }
    /* Everything reaches the file through the page buffer, in large pieces. */
    setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

Html5Page::Html5Page(const std::string &path) : path_(path), file_(createPage(path)), out_(file_) {}

Html5Page::~Html5Page()
{
    out_.flush();
    checked_close_rewritten(file_, path_.c_str());
}
