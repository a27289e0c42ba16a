// json_input.h -- a coverage file read whole into memory, ready for the JSON
// parser: plain or gzip-compressed (recognised by its magic bytes, not by
// its name), with the padding the parser reads past the end.
#ifndef VEMCOV_IMPORT_JSON_INPUT_H
#define VEMCOV_IMPORT_JSON_INPUT_H

#include <simdjson.h>

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace vemcov_import {

// Reads `path` into `text`. On failure returns false with a message that
// names the file in `error`.
bool loadJsonFile(const std::string &path, simdjson::padded_string &text, std::string &error);

// "line L, column C" of the byte at `offset` in `text` (both counted from 1),
// for messages about malformed input.
std::string describePlaceIn(const simdjson::padded_string &text, size_t offset);

/* A document that parses as JSON but is not what its tool writes. */
struct JsonFormatError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* Parses `text` (read from `path`) with simdjson's on-demand parser and hands
 * the document to `walk`. When the walk throws a JsonFormatError or the
 * parser finds malformed JSON, returns false with "<path>, <place>: <what>"
 * in `error`, the place being where the parser stood. */
bool walkJsonDocument(const simdjson::padded_string &text, const std::string &path,
                      const std::function<void(simdjson::ondemand::document &)> &walk, std::string &error);

}  // namespace vemcov_import

#endif
