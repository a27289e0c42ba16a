/* counter_lines.cpp -- the marker line and the counter lines of a listing. */
#include "report/counter_lines.h"

#include <cstdlib>
#include <cstring>

#include "driver/console.h"
#include "driver/number_format.h"
#include "analysis/coverage_store.h"

static const char COUNTER_LINE_START[] = "        <a style=\"background-color: %s\">";
static const char COUNTER_LINE_END[] = "</a>\n";
static const char MSG_MARKER_NO_MEMORY[] = "Error - Not enough memory!! (bOutputLineCoverage)\n";

void markerLineCreate(MarkerLine *marker)
{
    marker->text = static_cast<char *>(malloc(MARKER_LINE_START + 1));
    if (marker->text == nullptr)
        vemcov_Out_Of_Memory();
    marker->text[0] = '\0';
    marker->length = 0;
    marker->capacity = MARKER_LINE_START;
}

void markerLineFree(MarkerLine *marker)
{
    free(marker->text);
    marker->text = nullptr;
    marker->length = marker->capacity = 0;
}

bool markerLineAppend(MarkerLine *marker, char c)
{
    if (marker->length == marker->capacity) {
        size_t capacity = marker->capacity * 2;
        char *grown = static_cast<char *>(realloc(marker->text, capacity + 1));
        if (grown == nullptr) {
            fputs(MSG_MARKER_NO_MEMORY, stdout);
            return false;
        }
        marker->text = grown;
        marker->capacity = capacity;
    }
    marker->text[marker->length++] = c;
    marker->text[marker->length] = '\0';
    return true;
}

size_t counterLabel(char *label, coverage_list &store, uint32_t line, uint32_t column)
{
    uint64_t count = 0;
    uint32_t blocks = 0, executed = 0;
    store.bFetchHitCount(line, column, &count, false, nullptr, &blocks, &executed, nullptr);
    if (count == NEVER_EXECUTED)
        count = 0;

    char number[NUMBER_TEXT_MAX];
    size_t length = snprintf(label, COUNTER_LABEL_MAX, "^ %s ", u64_to_ascii(number, count));
    if (blocks >= 2) {
        label[length++] = '(';
        if (executed != 0 && executed != blocks)
            length += snprintf(label + length, COUNTER_LABEL_MAX - length, "%s/", u64_to_ascii(number, executed));
        length += snprintf(label + length, COUNTER_LABEL_MAX - length, "%s)", u64_to_ascii(number, blocks));
    }
    return length;
}

void writeCounterLines(FILE *page, MarkerLine *marker, coverage_list &store, uint32_t line, const char *colour)
{
    char *text = marker->text;
    char *caret = static_cast<char *>(memchr(text, '^', marker->length));
    const char *end = text + marker->length;
    while (caret != nullptr) {
        /* A new counter line, from the start of the marker line. */
        fprintf(page, COUNTER_LINE_START, colour);
        const char *copied = text;
        for (;;) {
            /* 1. The blanks and tabs up to the marker, so the label stands
             *    under its character. */
            fwrite(copied, 1, caret - copied, page);
            char label[COUNTER_LABEL_MAX];
            size_t width = counterLabel(label, store, line, static_cast<uint32_t>(caret - text + 1));
            fwrite(label, 1, width, page);
            *caret = ' ';

            /* 2. The next label shares the line when it stands at least a
             *    label's width further right. */
            char *next = static_cast<char *>(memchr(caret + 1, '^', end - caret - 1));
            if (next == nullptr || static_cast<size_t>(next - caret) < width) {
                fputs(COUNTER_LINE_END, page);
                /* Every marker left of `next` is printed, so the next
                 * counter line begins with it. */
                caret = next;
                break;
            }
            copied = caret + width;
            caret = next;
        }
    }
}
