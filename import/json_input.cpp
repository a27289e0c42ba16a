// json_input.cpp -- whole-file reads, with zlib for gzip-compressed input.
#include "import/json_input.h"

#include <sys/stat.h>
#include <zlib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace vemcov_import {
namespace {

// Reads the file straight into the parser's padded buffer: a plain export
// of hundreds of MB is held once.
bool readWholeFile(const std::string &path, simdjson::padded_string &bytes, std::string &error)
{
    FILE *file = fopen(path.c_str(), "rb");
    if (file == nullptr) {
        error = "cannot open " + path + ": " + strerror(errno);
        return false;
    }
    struct stat status;
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) {
        error = "cannot read " + path + ": not a regular file";
        fclose(file);
        return false;
    }
    size_t size = static_cast<size_t>(status.st_size);
    simdjson::padded_string buffer(size);
    if (buffer.data() == nullptr) {
        error = "cannot read " + path + ": out of memory";
        fclose(file);
        return false;
    }
    size_t got = size == 0 ? 0 : fread(buffer.data(), 1, size, file);
    bool failed = got != size || ferror(file) != 0;
    int saved = errno;
    fclose(file);
    if (failed) {
        error = "cannot read " + path + ": " + (saved != 0 ? strerror(saved) : "the file shrank while read");
        return false;
    }
    bytes.swap(buffer);
    return true;
}

bool isGzip(const simdjson::padded_string &bytes)
{
    return bytes.size() >= 2 && static_cast<unsigned char>(bytes.data()[0]) == 0x1F &&
           static_cast<unsigned char>(bytes.data()[1]) == 0x8B;
}

// Inflates every gzip member of `packed` (gcov writes one; concatenated
// members are valid gzip too).
bool gunzip(const simdjson::padded_string &packed, const std::string &path, std::string &plain, std::string &error)
{
    z_stream stream{};
    // 16 + MAX_WBITS: a gzip header and trailer around the deflate data.
    if (inflateInit2(&stream, 16 + MAX_WBITS) != Z_OK) {
        error = "cannot decompress " + path + ": zlib could not start";
        return false;
    }
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    std::vector<char> chunk(1 << 18);
    int status = Z_OK;
    while (true) {
        stream.next_out = reinterpret_cast<Bytef *>(chunk.data());
        stream.avail_out = static_cast<uInt>(chunk.size());
        status = inflate(&stream, Z_NO_FLUSH);
        plain.append(chunk.data(), chunk.size() - stream.avail_out);
        if (status == Z_STREAM_END) {
            if (stream.avail_in == 0)
                break;
            inflateReset(&stream);
            continue;
        }
        if (status != Z_OK) {
            break;
        }
    }
    inflateEnd(&stream);
    if (status != Z_STREAM_END) {
        error = "cannot decompress " + path + ": " +
                (stream.msg != nullptr ? std::string(stream.msg) : std::string("truncated gzip data"));
        return false;
    }
    return true;
}

}  // namespace

bool loadJsonFile(const std::string &path, simdjson::padded_string &text, std::string &error)
{
    simdjson::padded_string bytes;
    if (!readWholeFile(path, bytes, error))
        return false;
    if (isGzip(bytes)) {
        std::string plain;
        if (!gunzip(bytes, path, plain, error))
            return false;
        bytes = simdjson::padded_string(plain);
    }
    text.swap(bytes);
    return true;
}

std::string describePlaceIn(const simdjson::padded_string &text, size_t offset)
{
    size_t line = 1;
    size_t column = 1;
    for (size_t i = 0; i < offset && i < text.size(); i++) {
        if (text.data()[i] == '\n') {
            line++;
            column = 1;
        } else {
            column++;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace vemcov_import

namespace vemcov_import {

namespace {

std::string placeOf(simdjson::ondemand::document &doc, const simdjson::padded_string &text)
{
    const char *at = nullptr;
    if (doc.current_location().get(at) != simdjson::SUCCESS || at == nullptr)
        return "at the end";
    return describePlaceIn(text, static_cast<size_t>(at - text.data()));
}

}  // namespace

bool walkJsonDocument(const simdjson::padded_string &text, const std::string &path,
                      const std::function<void(simdjson::ondemand::document &)> &walk, std::string &error)
{
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document doc;
    bool iterating = false, ended_early = false;
    std::string what;
    try {
        doc = parser.iterate(text);
        iterating = true;
        walk(doc);
        return true;
    } catch (const JsonFormatError &e) {
        what = e.what();
    } catch (const simdjson::simdjson_error &e) {
        what = std::string("malformed JSON (") + e.what() + ")";
        // The parser finds an unclosed document before it walks it.
        if (e.error() == simdjson::INCOMPLETE_ARRAY_OR_OBJECT) {
            iterating = false;
            ended_early = true;
        }
    }
    std::string place = iterating ? placeOf(doc, text) : ended_early ? "at the end" : "at the start";
    error = path + ", " + place + ": " + what;
    return false;
}

}  // namespace vemcov_import
