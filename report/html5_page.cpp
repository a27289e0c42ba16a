/* html5_page.cpp -- the modern view's page buffer. */
#include "report/html5_page.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/process_exit.h"

void Html5Page::text(const char *value, size_t length)
{
    /* Most bytes are plain: a table tells the few that are not. */
    static const struct Specials {
        bool special[256] = {};
        Specials()
        {
            for (unsigned char c : {'&', '<', '>', '"', '\''})
                special[c] = true;
        }
    } table;
    const char *run = value;
    const char *end = value + length;
    for (const char *p = value; p < end; ++p) {
        if (!table.special[static_cast<unsigned char>(*p)])
            continue;
        out_.put(run, static_cast<size_t>(p - run));
        switch (*p) {
        case '&': out_.put("&amp;"); break;
        case '<': out_.put("&lt;"); break;
        case '>': out_.put("&gt;"); break;
        case '"': out_.put("&quot;"); break;
        default: out_.put("&#39;"); break;
        }
        run = p + 1;
    }
    out_.put(run, static_cast<size_t>(end - run));
}

void Html5Page::content(const char *value, size_t length)
{
    const char *run = value;
    const char *end = value + length;
    for (const char *p = value; p < end; ++p) {
        char c = *p;
        if (c != '&' && c != '<' && c != '>')
            continue;
        out_.put(run, static_cast<size_t>(p - run));
        out_.put(c == '&' ? "&amp;" : c == '<' ? "&lt;" : "&gt;");
        run = p + 1;
    }
    out_.put(run, static_cast<size_t>(end - run));
}

void Html5Page::text(const char *value)
{
    if (value != nullptr)
        text(value, strlen(value));
}

static FILE *createPage(const std::string &path)
{
    FILE *file = fopen(path.c_str(), "wb");
    if (file == nullptr) {
        fprintf(stderr, "ERROR: cannot write %s: %s\n", path.c_str(), strerror(errno));
        vemtra_Process_Exit(1);
    }
    return file;
}

Html5Page::Html5Page(const std::string &path) : path_(path), file_(createPage(path)), out_(file_) {}

Html5Page::~Html5Page()
{
    out_.flush();
    checked_close_output(file_, path_.c_str());
}
