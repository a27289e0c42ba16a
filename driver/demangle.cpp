/* demangle.cpp -- display names through the platform's C++ demangler. */
#include "driver/demangle.h"

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>

#include "driver/run_state.h"

/* Size of the demangling buffer at its first use. */
static const size_t DEMANGLE_BUFFER_START = 4096;

/* The process-wide demangling buffer; the demangler may replace it by a
 * larger one, which is then kept for the next call. */
static char *demangle_buffer = nullptr;
static size_t demangle_buffer_size = 0;

const char *demangleName(const char *name, int flag, int *length)
{
    (void)flag;
    *length = 0;
    if (name == nullptr || strncmp(name, "_Z", 2) != 0)
        return name;

    if (demangle_buffer == nullptr) {
        demangle_buffer = static_cast<char *>(malloc(DEMANGLE_BUFFER_START));
        if (demangle_buffer == nullptr)
            return name;
        demangle_buffer_size = DEMANGLE_BUFFER_START;
    }
    int status = 0;
    char *demangled = abi::__cxa_demangle(name, demangle_buffer, &demangle_buffer_size, &status);
    if (demangled == nullptr || status != 0)
        return name;
    demangle_buffer = demangled;
    *length = static_cast<int>(strlen(demangled)) + 1;
    return demangled;
}

void NormalizeName(char *name)
{
    if (!isWindows || name == nullptr)
        return;
    /* Letters are folded; a "/" is written back as "/", that is, kept. */
    for (char *c = name; *c != '\0'; ++c)
        if (*c >= 'a' && *c <= 'z')
            *c = static_cast<char>(*c - 'a' + 'A');
}
