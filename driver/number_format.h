/* number_format.h -- decimal texts of counts, with "," between groups of
 * three digits or without separators. Every writer that prints a grouped
 * number goes through here. */
#ifndef VEMCOV_DRIVER_NUMBER_FORMAT_H
#define VEMCOV_DRIVER_NUMBER_FORMAT_H

#include <cstdint>

/* Room for the longest text with its terminator (a sign, 20 digits and 6
 * separators need 28). */
#define NUMBER_TEXT_MAX 28

/* Writes `value` with a "," before every group of three digits counted from
 * the right (1234567 -> "1,234,567", 0 -> "0") into `buffer`, which holds at
 * least NUMBER_TEXT_MAX characters. Returns `buffer`. */
char *u64_to_ascii(char *buffer, uint64_t value);

/* The same for a signed value, with a leading "-" when it is negative; the
 * most negative value prints correctly. Returns `buffer`. */
char *i64_to_ascii(char *buffer, int64_t value);

/* The digits of `value` without separators. Returns `buffer`. */
char *u64_to_ascii_no_sep(char *buffer, uint64_t value);

#endif
