/* html5_page.h -- one page of the modern view, built in memory and written
 * with one call: raw markup, escaped text, and numbers made by hand. */
#ifndef VEMCOV_REPORT_HTML5_PAGE_H
#define VEMCOV_REPORT_HTML5_PAGE_H

#include <cstddef>
#include <cstdint>
#include <string>

class Html5Page {
public:
    void raw(const char *markup) { bytes_ += markup; }
    void raw(const std::string &markup) { bytes_ += markup; }
    void raw(char c) { bytes_ += c; }

    /* Text or a double-quoted attribute value: & < > " ' as entities. */
    void text(const char *value, size_t length);
    void text(const char *value);
    void text(const std::string &value) { text(value.data(), value.size()); }

    void number(uint64_t value);
    /* A percentage already rounded to two decimals, as "83.33". */
    void percent(double rounded);

    /* Writes the page to `path`; a failed write ends the run with
     * "ERROR: cannot write %s: %s" and status 1. */
    void save(const std::string &path) const;

    size_t size() const { return bytes_.size(); }
    void reserve(size_t bytes) { bytes_.reserve(bytes); }

private:
    std::string bytes_;
};

#endif
