/* xml_escape.cpp -- the XML escape routine. */
#include "analysis/xml_escape.h"

#include <cstring>

void escapeXML(FILE *out, const char *text)
{
    if (text == nullptr)
        return;
    const char *run = text;
    for (const char *p = text;; ++p) {
        const char *entity;
        switch (*p) {
        case '"': entity = "&quot;"; break;
        case '&': entity = "&amp;"; break;
        case '\'': entity = "&apos;"; break;
        case '<': entity = "&lt;"; break;
        case '>': entity = "&gt;"; break;
        case '\0': entity = nullptr; break;
        default: continue;
        }
        if (p > run)
            fwrite(run, 1, p - run, out);
        if (entity == nullptr)
            return;
        fputs(entity, out);
        run = p + 1;
    }
}
