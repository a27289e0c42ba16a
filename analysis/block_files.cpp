/* block_files.cpp -- the full block-coverage files and their block list. */
#include "analysis/block_files.h"

#include <cstdlib>

#include "analysis/coverage_state.h"
#include "analysis/xml_escape.h"
#include "driver/console.h"

namespace {

const char TXT_MODULE[] = "file - %s\n";
const char TXT_FUNCTION[] = "function - %s\t%s\n";
const char TXT_NEVER_CALLED[] = "function - %s\t0\n";
const char TXT_BLOCK[] = "%d\t%d\t%d\t%12.0f\n";
const char XML_MODULE_OPEN[] = "<MODULE name = \"";
const char XML_MODULE_CLOSE[] = "</MODULE>\n";
const char XML_FUNCTION_OPEN[] = "<FUNCTION name=\"";
const char XML_FUNCTION_FREQ[] = "\" freq=\"%s\">\n";
const char XML_NEVER_CALLED[] = "\" freq=\"0\" line=\"%d\"></FUNCTION>\n";
const char XML_FUNCTION_CLOSE[] = "</FUNCTION>\n";
const char XML_BLOCK_OPEN[] = "<BLOCK line=\"%d\" col=\"%d\">\n";
const char XML_INSTANCE[] = "<INSTANCE id=\"%d\" freq=\"%12.0f\">\n</INSTANCE>\n";
const char XML_BLOCK_CLOSE[] = "</BLOCK>\n";
const char MSG_NO_MEMORY[] = "ERROR: unable to allocate %d bytes of memory for %s\n";

bool smaller(const blocks *a, const blocks *b)
{
    return a->line < b->line || (a->line == b->line && a->col < b->col);
}

bool samePosition(const blocks *a, const blocks *b)
{
    return a->line == b->line && a->col == b->col;
}

}  // namespace

blocks *add_block_cov(int line, int col, double count, blocks *array, blocks *head, int index)
{
    blocks *entry = &array[index];
    entry->line = line;
    entry->col = col;
    entry->freq = count;
    entry->next = head;
    return entry;
}

/* Merges two position-ordered lists; on equal positions `first` goes first,
 * which keeps the merge stable. */
static blocks *mergeByPosition(blocks *first, blocks *second)
{
    blocks merged;
    blocks *tail = &merged;
    while (first != nullptr && second != nullptr) {
        if (smaller(second, first)) {
            tail->next = second;
            second = second->next;
        } else {
            tail->next = first;
            first = first->next;
        }
        tail = tail->next;
    }
    tail->next = first != nullptr ? first : second;
    return merged.next;
}

blocks *sort_block_list(blocks *head)
{
    /* A bottom-up merge sort: n log n whatever order the blocks came in, and
     * stable, so equal positions keep their newest-first order. Runs[k]
     * holds a sorted run of 2^k entries. */
    blocks *runs[64] = {};
    int used = 0;
    while (head != nullptr) {
        blocks *run = head;
        head = head->next;
        run->next = nullptr;
        int k = 0;
        for (; k < used && runs[k] != nullptr; ++k) {
            run = mergeByPosition(runs[k], run);
            runs[k] = nullptr;
        }
        if (k == used)
            ++used;
        runs[k] = run;
    }
    blocks *sorted = nullptr;
    for (int k = 0; k < used; ++k)
        if (runs[k] != nullptr)
            sorted = mergeByPosition(runs[k], sorted);
    return sorted;
}

bool printTXT_bcov_full(FILE *out, blocks *head)
{
    if (out == nullptr)
        return true;
    int instance = 0;
    for (const blocks *b = head, *previous = nullptr; b != nullptr; previous = b, b = b->next) {
        instance = previous != nullptr && samePosition(previous, b) ? instance + 1 : 1;
        fprintf(out, TXT_BLOCK, instance, b->line, b->col, b->freq);
    }
    return true;
}

bool printXML_bcov_full(FILE *out, blocks *head)
{
    if (out == nullptr)
        return true;
    for (const blocks *b = head; b != nullptr;) {
        const blocks *position = b;
        fprintf(out, XML_BLOCK_OPEN, position->line, position->col);
        for (int instance = 1; b != nullptr && samePosition(b, position); b = b->next, ++instance)
            fprintf(out, XML_INSTANCE, instance, b->freq);
        fputs(XML_BLOCK_CLOSE, out);
    }
    return true;
}

void ensureBlockArray(uint32_t count)
{
    if (s_blockNum > count)
        return;
    free(lb_blockNum);
    /* One slot at least, so that an empty segment is not taken for a
     * failed allocation. */
    lb_blockNum = static_cast<blocks *>(malloc((count > 0 ? count : 1) * sizeof(blocks)));
    if (lb_blockNum == nullptr) {
        s_blockNum = 0;
        fprintf(stderr, MSG_NO_MEMORY, static_cast<int>(count * sizeof(blocks)), "");
        tvx_Exit(1);
    }
    s_blockNum = count;
}

uint64_t functionFrequency(const DPI_S *segment)
{
    float sum = 0.0f;
    for (uint32_t e = 0; e < segment->entry_cnt; ++e) {
        uint32_t index = segment->entry_index[e];
        if (index < segment->block_cnt)
            sum += static_cast<float>(segment->blocks[index].count);
    }
    /* A sum that reaches 2^64 keeps the largest value. */
    if (!(sum < 18446744073709551616.0f))
        return UINT64_MAX;
    return static_cast<uint64_t>(sum);
}

const char *functionFrequencyText(const DPI_S *segment, char buffer[FREQUENCY_TEXT_SIZE])
{
    snprintf(buffer, FREQUENCY_TEXT_SIZE, "%llu", static_cast<unsigned long long>(functionFrequency(segment)));
    return buffer;
}

void writeModuleOpen(FILE *txt, FILE *xml, const char *module)
{
    if (xml != nullptr) {
        fputs(XML_MODULE_OPEN, xml);
        escapeXML(xml, module);
        fputs("\">\n", xml);
    }
    if (txt != nullptr)
        fprintf(txt, TXT_MODULE, module);
}

void writeModuleClose(FILE *xml)
{
    if (xml != nullptr)
        fputs(XML_MODULE_CLOSE, xml);
}

void writeFunctionOpen(FILE *txt, FILE *xml, const char *name, const char *frequency)
{
    if (txt != nullptr)
        fprintf(txt, TXT_FUNCTION, name, frequency);
    if (xml != nullptr) {
        fputs(XML_FUNCTION_OPEN, xml);
        escapeXML(xml, name);
        fprintf(xml, XML_FUNCTION_FREQ, frequency);
    }
}

void writeFunctionClose(FILE *xml)
{
    if (xml != nullptr)
        fputs(XML_FUNCTION_CLOSE, xml);
}

void writeFullFunctionBlocks(FILE *txt, FILE *xml, blocks *head)
{
    printTXT_bcov_full(txt, head);
    printXML_bcov_full(xml, head);
    writeFunctionClose(xml);
}

void writeFullNeverCalled(FILE *txt, FILE *xml, const char *name, int line)
{
    if (txt != nullptr)
        fprintf(txt, TXT_NEVER_CALLED, name);
    if (xml != nullptr) {
        fputs(XML_FUNCTION_OPEN, xml);
        escapeXML(xml, name);
        fprintf(xml, XML_NEVER_CALLED, line);
    }
}
