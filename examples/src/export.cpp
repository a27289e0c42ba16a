// export.cpp -- writes the ledger as comma-separated values. Nothing calls
// it yet, so no run reaches it.
#include <cstdio>

#include "ledger.h"

void writeCsv(FILE *out, const std::vector<Item> &items)
{
    fprintf(out, "name,quantity,price\n");
    for (const Item &item : items)
        fprintf(out, "%s,%d,%.2f\n", item.name.c_str(), item.quantity, item.price);
}
