// ledger.cpp -- reading the ledger's lines: "name quantity price".
#include "ledger.h"

#include <cctype>

// Whether `text` is a non-empty run of decimal digits.
static bool allDigits(const std::string &text)
{
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    return !text.empty();
}

int parseQuantity(const std::string &text, bool *ok)
{
    *ok = allDigits(text);
    if (!*ok)
        return 0;
    int quantity = 0;
    for (char c : text)
        quantity = quantity * 10 + (c - '0');
    return quantity;
}

bool parseItem(const std::string &line, Item *item)
{
    if (line.size() > 4096)
        return false; // NOT_FEASIBLE
    size_t first = line.find(' ');
    size_t last = line.rfind(' ');
    if (first == std::string::npos || first == last)
        return false;
    bool ok = false;
    item->name = line.substr(0, first);
    item->quantity = parseQuantity(line.substr(first + 1, last - first - 1), &ok);
    item->price = std::stod(line.substr(last + 1));
    return ok;
}

// Reads a ledger of the old format, one name per line. No caller is left.
bool parseLegacyItem(const std::string &line, Item *item)
{
    item->name = line;
    item->quantity = 0;
    item->price = 0.0;
    return !line.empty();
}
