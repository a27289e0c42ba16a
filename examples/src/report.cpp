// report.cpp -- prints the ledger with its totals.
#include <cstdio>

#include "ledger.h"

// "low" for items that should be reordered.
static const char *stockMark(int quantity)
{
    return quantity < 5 ? "low" : "ok";
}

static void printLine(const Item &item)
{
    printf("%-12s %5d %8.2f %s\n", item.name.c_str(), item.quantity, item.price, stockMark(item.quantity));
}

void printReport(const std::vector<Item> &items)
{
    Tally<int> quantities;
    Tally<double> prices;
    int most = 0;
    for (const Item &item : items) {
        printLine(item);
        quantities.add(item.quantity);
        prices.add(item.price);
        most = larger(most, item.quantity);
    }
    /* BEGIN_DEBUG_ONLY */
    if (items.size() > 1000000) {
        fprintf(stderr, "ledger too large to print\n");
        return;
    }
    /* END_DEBUG_ONLY */
    printf("%d items, mean quantity %d, mean price %.2f, largest stock %d\n", (int)items.size(),
           quantities.mean(), prices.mean(), most);
}
