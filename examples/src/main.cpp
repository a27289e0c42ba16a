// main.cpp -- reads a ledger from standard input and prints its report.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "ledger.h"

int main()
{
    std::vector<Item> items;
    std::string line;
    int bad = 0;
    while (std::getline(std::cin, line)) {
        Item item;
        if (parseItem(line, &item))
            items.push_back(item);
        else
            ++bad;
    }
    if (bad > 0)
        fprintf(stderr, "%d malformed lines skipped\n", bad);
    printReport(items);
    return 0;
}
