/* html_escape.cpp -- escaping values for page text, attributes and URL
 * queries. */
#include "report/html_escape.h"

#include <cstring>

/* The characters that HtmlValue replaces. */
static const char HTML_SPECIAL[] = "<>\"'";

const char *htmlEntity(char c)
{
    switch (c) {
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    default: return nullptr;
    }
}

HtmlValue::HtmlValue(const char *text) : text_(text != nullptr ? text : "")
{
    const char *special = strpbrk(text_, HTML_SPECIAL);
    if (special == nullptr)
        return;
    escaped_.assign(text_, special);
    for (const char *p = special; *p != '\0'; ++p) {
        const char *entity = htmlEntity(*p);
        if (entity != nullptr)
            escaped_ += entity;
        else
            escaped_ += *p;
    }
    text_ = escaped_.c_str();
}

const EscapeSet HTML_VALUE_ESCAPES{{'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};

void putHtmlValue(PageWriter &page, const char *text)
{
    if (text != nullptr)
        page.putEscaped(text, strlen(text), HTML_VALUE_ESCAPES);
}

void writeHtmlValue(FILE *page, const char *text)
{
    fputs(HtmlValue(text).c_str(), page);
}

/* Characters a query value keeps: the unreserved ones, and those that a
 * query may hold and that mean nothing inside one value (so that a
 * decorated name such as "_Send@12" keeps its bytes). "&", "=", "+", "#"
 * and "%" would cut or change the value, and quotes and angle brackets
 * would leave the attribute: they are encoded with the rest. */
static bool keptInQuery(unsigned char c)
{
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
        return true;
    return c != '\0' && strchr("-._~:@/?!$()*,;", c) != nullptr;
}

void writeUrlQueryValue(FILE *page, const char *text)
{
    static const char HEX[] = "0123456789ABCDEF";
    if (text == nullptr)
        return;
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p != '\0'; ++p) {
        if (keptInQuery(*p)) {
            fputc(*p, page);
        } else {
            char encoded[3] = {'%', HEX[*p >> 4], HEX[*p & 15]};
            fwrite(encoded, 1, sizeof encoded, page);
        }
    }
}
