// ledger.h -- a small stock ledger: its items, and helpers over them.
#ifndef EXAMPLE_LEDGER_H
#define EXAMPLE_LEDGER_H

#include <string>
#include <vector>

struct Item {
    std::string name;
    int quantity;
    double price;
};

// The larger of two values of any ordered type.
template <typename T>
T larger(T a, T b)
{
    return a < b ? b : a;
}

// Running sum and mean of values of one type.
template <typename T>
class Tally {
public:
    void add(T value)
    {
        sum_ += value;
        ++count_;
    }
    T mean() const { return count_ == 0 ? T() : sum_ / count_; }

private:
    T sum_ = T();
    int count_ = 0;
};

int parseQuantity(const std::string &text, bool *ok);
bool parseItem(const std::string &line, Item *item);
void printReport(const std::vector<Item> &items);

#endif
