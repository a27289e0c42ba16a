/* html5_page.cpp -- the modern view's page buffer. */
#include "report/html5_page.h"

#include <cerrno>
#include <cmath>
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
        bytes_.append(run, static_cast<size_t>(p - run));
        switch (*p) {
        case '&': bytes_ += "&amp;"; break;
        case '<': bytes_ += "&lt;"; break;
        case '>': bytes_ += "&gt;"; break;
        case '"': bytes_ += "&quot;"; break;
        default: bytes_ += "&#39;"; break;
        }
        run = p + 1;
    }
    bytes_.append(run, static_cast<size_t>(end - run));
}

void Html5Page::text(const char *value)
{
    if (value != nullptr)
        text(value, strlen(value));
}

void Html5Page::number(uint64_t value)
{
    char digits[24];
    char *p = digits + sizeof digits;
    do {
        *--p = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    bytes_.append(p, static_cast<size_t>(digits + sizeof digits - p));
}

void Html5Page::percent(double rounded)
{
    /* Hundredths as a whole number: the value is already rounded. */
    uint64_t hundredths = static_cast<uint64_t>(std::llround(rounded * 100.0));
    number(hundredths / 100);
    bytes_ += '.';
    bytes_ += static_cast<char>('0' + hundredths / 10 % 10);
    bytes_ += static_cast<char>('0' + hundredths % 10);
}

void Html5Page::save(const std::string &path) const
{
    FILE *file = fopen(path.c_str(), "wb");
    if (file == nullptr) {
        fprintf(stderr, "ERROR: cannot write %s: %s\n", path.c_str(), strerror(errno));
        vemtra_Process_Exit(1);
    }
    fwrite(bytes_.data(), 1, bytes_.size(), file);
    checked_close_output(file, path.c_str());
}
