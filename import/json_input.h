// json_input.h -- a coverage file read whole into memory, ready for the JSON
// parser: plain or gzip-compressed (recognised by its magic bytes, not by
// its name), with the padding the parser reads past the end.
#ifndef VEMCOV_IMPORT_JSON_INPUT_H
#define VEMCOV_IMPORT_JSON_INPUT_H

#include <simdjson.h>

#include <cstddef>
#include <string>

namespace vemcov_import {

// Reads `path` into `text`. On failure returns false with a message that
// names the file in `error`.
bool loadJsonFile(const std::string &path, simdjson::padded_string &text, std::string &error);

// "line L, column C" of the byte at `offset` in `text` (both counted from 1),
// for messages about malformed input.
std::string describePlaceIn(const simdjson::padded_string &text, size_t offset);

/* Where the on-demand parser stands in `text`, as describePlaceIn says it,
 * or "at the end". */
std::string placeOf(simdjson::ondemand::document &doc, const simdjson::padded_string &text);

}  // namespace vemcov_import

#endif
