// command_line_fuzzer.cpp -- the command line: the input's bytes, split at
// NUL bytes, are the arguments after argv[0], parsed as the run parses
// them (the banner and usage texts go to the closed standard streams).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "driver/options.h"
#include "driver/settings.h"
#include "tests/fuzz/fuzz_exit.h"

// The parser runs once per process in the tool, so it neither frees the
// settings of an earlier parse nor empties the marker lists: the harness
// does, so that memory stays flat over millions of inputs.
static void resetSettings()
{
    for (char **copy : {&g_lpszSPIFileName, &g_lpszDPIFileName, &g_lpszRefDPIFileName, &g_lpszSrcRoot,
                        &g_lpszProjName, &g_lpszMailAddr, &g_lpszMailName, &g_lpszOutFileExt}) {
        free(*copy);
        *copy = nullptr;
    }
    one_line_disable.clear();
    start_disable_block.clear();
    end_disable_block.clear();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<std::string> words(1, "vemcov");
    std::string word;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\0') {
            words.push_back(word);
            word.clear();
        } else {
            word += static_cast<char>(data[i]);
        }
    }
    words.push_back(word);
    if (words.size() > 64)
        return 0;
    // The parser keeps pointers to some arguments for the whole run, as it
    // would keep argv's: these strings stay alive until the next input.
    static std::vector<std::string> kept;
    kept = words;
    std::vector<char *> argv;
    for (std::string &w : kept)
        argv.push_back(&w[0]);
    argv.push_back(nullptr);
    resetSettings();
    try {
        bParseCommandLine(static_cast<int>(kept.size()), argv.data());
    } catch (const FuzzExit &) {
    }
    return 0;
}
