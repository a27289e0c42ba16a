/* naming.cpp -- page names of the report and the shared text helpers. */
#include "report/naming.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "driver/console.h"

const char REPORT_DIR[] = "CodeCoverage";
const char ROOT_PAGE[] = "Code_Coverage";
const char SUMMARY_PAGE[] = "__Code_Coverage";
const char COVERED_FILES_PAGE[] = "__Covered_Files_Coverage";
const char UNCOVERED_FILES_PAGE[] = "__Uncovered_Files_Coverage";
const char TOOLBAR_PAGE[] = "__ToolBar";
const char HELP_PAGE[] = "__Help";

/* "CodeCoverage/" in front of the Dir forms. */
static const size_t REPORT_DIR_PREFIX_LENGTH = sizeof REPORT_DIR; /* the "/" takes the NUL's place */

/* Bytes a name needs beyond its text and extension: the "." and the NUL;
 * "_" and the order number; "CodeCoverage/" as well. */
static const size_t PLAIN_EXTRA = 2;
static const size_t ORDER_OR_DIR_EXTRA = 15;
static const size_t DIR_ORDER_EXTRA = 28;

static const size_t INITIAL_NAME_BUFFER_SIZE = 4096;

/* The longest file name a file system takes in one path component. */
static const size_t NAME_COMPONENT_MAX = 255;
/* "_" and 16 hexadecimal digits of the hash that stand for a cut name. */
static const size_t HASH_SUFFIX_LENGTH = 17;

/* Each thread's own name buffer, freed when the thread ends. */
struct NameBuffer {
    char *bytes = nullptr;
    size_t size = INITIAL_NAME_BUFFER_SIZE;
    ~NameBuffer() { free(bytes); }
};
static thread_local NameBuffer names;

/* The thread's buffer (page writers may run on several threads) with
 * room for at least `need` bytes. When the current
 * one is too small it is replaced by one of the smallest power of two
 * strictly greater than `need`. */
static char *reserveName(size_t need)
{
    if (names.bytes != nullptr && need <= names.size)
        return names.bytes;
    if (need > names.size) {
        size_t size = 1;
        while (size <= need)
            size <<= 1;
        names.size = size;
    }
    free(names.bytes);
    names.bytes = static_cast<char *>(malloc(names.size));
    if (names.bytes == nullptr) {
        fprintf(stderr, "ERROR: out of memory! requested size = %d\n", (int)names.size);
        tvx_Exit(1);
    }
    return names.bytes;
}

size_t reportNameBufferSize()
{
    return names.size;
}

/* 64-bit FNV-1a: a fixed, well-spread hash, the same on every host. */
static uint64_t nameHash(const char *text)
{
    uint64_t hash = 0xcbf29ce484222325ull;
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p != '\0'; ++p) {
        hash ^= *p;
        hash *= 0x100000001b3ull;
    }
    return hash;
}

void shortenLongName(char *name, size_t extLength)
{
    size_t length = strlen(name);
    /* An extension that leaves no room for a prefix cannot be helped. */
    if (length <= NAME_COMPONENT_MAX || extLength + 1 + HASH_SUFFIX_LENGTH >= NAME_COMPONENT_MAX)
        return;
    /* Out-of-tree builds and sandboxes record paths whose page names pass
     * the file system's limit on one name. The name keeps as much of its
     * front as fits and a hash of the whole, so that two long names differ
     * and every link to a page, made by the same rule, finds it. */
    uint64_t hash = nameHash(name);
    size_t keep = NAME_COMPONENT_MAX - HASH_SUFFIX_LENGTH - 1 - extLength;
    char *suffix = name + keep;
    snprintf(suffix, HASH_SUFFIX_LENGTH + 1, "_%016llX", static_cast<unsigned long long>(hash));
    char *dot = name + length - extLength - 1;
    memmove(suffix + HASH_SUFFIX_LENGTH, dot, extLength + 2);
}

/* Composes [CodeCoverage/]<text><tag>[_<number>] and applies the name rules
 * to everything after the directory. `extra` is the need beyond the text,
 * tag and extension lengths. */
static const char *makeName(bool inDir, const char *text, const char *tag, bool numbered,
                            int number, const char *ext, size_t extra)
{
    size_t textLength = strlen(text);
    size_t tagLength = tag != nullptr ? strlen(tag) : 0;
    size_t extLength = strlen(ext);
    char *buffer = reserveName(textLength + tagLength + extLength + extra);

    char *body = buffer;
    if (inDir) {
        memcpy(body, REPORT_DIR, REPORT_DIR_PREFIX_LENGTH - 1);
        body[REPORT_DIR_PREFIX_LENGTH - 1] = '/';
        body += REPORT_DIR_PREFIX_LENGTH;
    }
    char *end = body;
    memcpy(end, text, textLength);
    end += textLength;
    if (tagLength != 0) {
        memcpy(end, tag, tagLength);
        end += tagLength;
    }
    if (numbered)
        end += sprintf(end, "_%d", number);
    *end = '\0';

    /* 1. The last dot becomes "_"; with a tag or number attached it is
     *    normally the dot of the source file's extension. */
    char *dot = strrchr(body, '.');
    if (dot != nullptr)
        *dot = '_';
    /* 2. Path separators and drive colons become "_". */
    hyphenize(body);
    /* 3. The extension. */
    *end++ = '.';
    memcpy(end, ext, extLength + 1);
    /* 4. Upper case, extension included. */
    for (char *p = body; *p != '\0'; ++p) {
        if (*p >= 'a' && *p <= 'z')
            *p = (char)(*p - 'a' + 'A');
    }
    /* 5. A name the file system cannot take is cut. */
    shortenLongName(body, extLength);
    return buffer;
}

const char *getHTMLname(const char *name, const char *ext)
{
    return makeName(false, name, nullptr, false, 0, ext, PLAIN_EXTRA);
}

const char *getVerHTMLname(const char *name, int number, const char *ext)
{
    return makeName(false, name, nullptr, true, number, ext, ORDER_OR_DIR_EXTRA);
}

const char *getSrcHTMLname(const char *path, const char *ext)
{
    return makeName(false, path, "_SRC", false, 0, ext, PLAIN_EXTRA);
}

const char *getDirHTMLname(const char *name, const char *ext)
{
    return makeName(true, name, nullptr, false, 0, ext, ORDER_OR_DIR_EXTRA);
}

const char *getDirSlashHTMLname(const char *name, const char *ext)
{
    return getDirHTMLname(name, ext);
}

const char *getDirVerHTMLname(const char *name, int number, const char *ext)
{
    return makeName(true, name, nullptr, true, number, ext, DIR_ORDER_EXTRA);
}

const char *getDirSlashVerHTMLname(const char *name, int number, const char *ext)
{
    return getDirVerHTMLname(name, number, ext);
}

const char *getDirSrcHTMLname(const char *path, const char *ext)
{
    return makeName(true, path, "_SRC", false, 0, ext, ORDER_OR_DIR_EXTRA);
}

const char *pathBaseName(const char *path)
{
    const char *slash = strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

void hyphenize(char *text)
{
    for (; *text != '\0'; ++text) {
        if (*text == '/' || *text == ':' || *text == '\\')
            *text = '_';
    }
}

char *strtrns(char *text, char from, char to)
{
    if (text == nullptr)
        return text;
    for (char *p = text; *p != '\0'; ++p) {
        if (*p == from)
            *p = to;
    }
    return text;
}

void printHTMLstr(FILE *stream, const char *text)
{
    if (text == nullptr)
        return;
    for (; *text != '\0'; ++text) {
        if (*text == '<')
            fputs("&lt;", stream);
        else if (*text == '"')
            fputs("&quot;", stream);
        else
            fputc(*text, stream);
    }
}
