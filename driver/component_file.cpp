/* component_file.cpp -- reading the component list file, matching modules
 * against its patterns, and the check that no marker serves two roles. */
#include "driver/component_file.h"

#include <cstdio>
#include <cstring>

#include "driver/console.h"
#include "driver/run_state.h"
#include "driver/settings.h"

std::vector<std::string> moduleName;

/* Messages of the component file, word for word ("quotas", "not does not"
 * and "infiseable" are the tool's own words). */
static const char MSG_CANNOT_OPEN[] = "ERROR: Couldn't open the component file %s\n";
static const char MSG_NO_QUOTES_ONE_LINE[] = "ERROR: File %s does not contain quotas for ONE_LINE_NOTFEASIBLE\n";
static const char MSG_NO_QUOTES_BEGIN[] = "ERROR: File %s does not contain quotas for BEGIN_NOTFEASIBLE\n";
static const char MSG_NO_QUOTES_END[] = "ERROR: File %s does not contain quotas for END_NOTFEASIBLE\n";
static const char MSG_EMPTY_MARKER[] = "ERROR: you specified empty marker for infeasible\n";
static const char MSG_CANNOT_CLOSE[] = "WARNING: couldn't close the component file %s\n";
static const char MSG_NO_CONTENT[] = "ERROR: File %s does not contain any component information\n";
static const char MSG_START_WITHOUT_END[] =
    "ERROR: Component file %s specifies start block marker but not does not specify end block marker\n";
static const char MSG_END_WITHOUT_START[] =
    "ERROR: Component file %s specifies end block marker but not does not specify start block marker\n";
static const char MSG_CLASH_ONE_LINE_START[] =
    "ERROR: same comment %s specified for one-line infiseable and start infeasible block\n";
static const char MSG_CLASH_ONE_LINE_END[] =
    "ERROR: same comment %s specified for one-line infiseable and end infeasible block\n";
static const char MSG_CLASH_END_START[] =
    "ERROR: same comment %s specified for end infiseable block and start infeasible block\n";

/* Longest piece of a line that counts as one line; longer lines are cut
 * into pieces of this many characters. */
static const size_t COMPONENT_LINE_MAX = 4095;

/* One kind of marker line: its keyword, the list it feeds and the message
 * for missing quotes. The keywords are tested in this order. */
struct MarkerKind {
    const char *keyword;
    std::vector<std::string> *list;
    const char *no_quotes;
};

static const MarkerKind MARKER_KINDS[] = {
    {"ONE_LINE_NOTFEASIBLE:", &one_line_disable, MSG_NO_QUOTES_ONE_LINE},
    {"BEGIN_NOTFEASIBLE:", &start_disable_block, MSG_NO_QUOTES_BEGIN},
    {"END_NOTFEASIBLE:", &end_disable_block, MSG_NO_QUOTES_END},
};

/* Reads the next line (or piece of an over-long line) without its newline
 * into `line`. A newline right after a full piece ends that piece, so a line
 * of exactly the maximum length is one line. Returns false at end of file. */
static bool readComponentLine(FILE *file, std::string &line)
{
    line.clear();
    int c = getc(file);
    if (c == EOF)
        return false;
    while (c != EOF && c != '\n') {
        line += static_cast<char>(c);
        if (line.size() == COMPONENT_LINE_MAX) {
            c = getc(file);
            if (c != '\n' && c != EOF)
                ungetc(c, file);
            return true;
        }
        c = getc(file);
    }
    return true;
}

/* Takes the marker of a marker line: the text between the first double
 * quote at or after `start` and the next one. The search ends at the end of
 * the line. Missing quotes or an empty marker end the run. */
static std::string takeMarker(const std::string &line, size_t start, const MarkerKind &kind, const char *path)
{
    size_t open = start < line.size() ? line.find('"', start) : std::string::npos;
    size_t close = open == std::string::npos ? std::string::npos : line.find('"', open + 1);
    if (close == std::string::npos) {
        fprintf(stderr, kind.no_quotes, path);
        tvx_Exit(1);
    }
    if (close == open + 1) {
        fputs(MSG_EMPTY_MARKER, stderr);
        tvx_Exit(1);
    }
    return line.substr(open + 1, close - open - 1);
}

/* Folds a module pattern the way the static profile's file names are
 * folded on a Windows host. */
static void foldForWindows(std::string &pattern)
{
    for (char &c : pattern) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        else if (c == '/')
            c = '\\';
    }
}

/* Files one line: a marker into its list, anything else as a pattern. */
static void classifyLine(const std::string &line, const char *path)
{
    for (const MarkerKind &kind : MARKER_KINDS) {
        if (line.find(kind.keyword) == std::string::npos)
            continue;
        Infeasible_markers_specified = 1;
        /* The value is searched from the keyword's length counted from the
         * line's start: the keyword belongs at the start of the line. */
        kind.list->push_back(takeMarker(line, strlen(kind.keyword), kind, path));
        return;
    }
    std::string pattern = line;
    if (isWindows)
        foldForWindows(pattern);
    moduleName.push_back(pattern);
}

/* Closes the file when a documented exit unwinds through the reading
 * instead of ending the process (a build that returns such exits to its
 * caller); the normal path closes it itself and checks the close. */
struct ComponentFileGuard {
    FILE *file;
    ~ComponentFileGuard()
    {
        if (file != nullptr)
            fclose(file);
    }
};

int getModuleNames(const char *path)
{
    if (path == nullptr)
        return 0;

    /* 1. Open. */
    FILE *file = fopen(path, "r");
    if (file == nullptr) {
        fprintf(stderr, MSG_CANNOT_OPEN, path);
        tvx_Exit(1);
    }

    /* 2. Classify every line. */
    ComponentFileGuard guard{file};
    std::string line;
    while (readComponentLine(file, line))
        classifyLine(line, path);

    /* 3. Close. */
    guard.file = nullptr;
    if (fclose(file) != 0)
        fprintf(stderr, MSG_CANNOT_CLOSE, path);

    /* 4. Something must be selected or marked, here or on the command line. */
    if (one_line_disable.empty() && start_disable_block.empty() && end_disable_block.empty() && moduleName.empty()) {
        fprintf(stderr, MSG_NO_CONTENT, path);
        tvx_Exit(1);
    }

    /* 5. Region markers come in pairs of kinds. */
    if (!start_disable_block.empty() && end_disable_block.empty()) {
        fprintf(stderr, MSG_START_WITHOUT_END, path);
        tvx_Exit(1);
    }
    if (!end_disable_block.empty() && start_disable_block.empty()) {
        fprintf(stderr, MSG_END_WITHOUT_START, path);
        tvx_Exit(1);
    }
    return 0;
}

int isInComponents(const char *fileName)
{
    if (moduleName.empty())
        return 1;
    const char *name = fileName != nullptr ? fileName : "";
    int match = 0;
    for (const std::string &pattern : moduleName) {
        if (!pattern.empty() && pattern[0] == '~') {
            if (strstr(name, pattern.c_str() + 1) != nullptr)
                return 0;
        } else if (strstr(name, pattern.c_str()) != nullptr) {
            match = 1;
        }
    }
    return match;
}

/* True when `marker` is one of `list`. */
static bool listHolds(const std::vector<std::string> &list, const std::string &marker)
{
    for (const std::string &entry : list)
        if (entry == marker)
            return true;
    return false;
}

int check_NFmarkers_intersect()
{
    for (const std::string &marker : one_line_disable) {
        if (listHolds(start_disable_block, marker)) {
            fprintf(stderr, MSG_CLASH_ONE_LINE_START, marker.c_str());
            return 1;
        }
        if (listHolds(end_disable_block, marker)) {
            fprintf(stderr, MSG_CLASH_ONE_LINE_END, marker.c_str());
            return 1;
        }
    }
    for (const std::string &marker : end_disable_block) {
        if (listHolds(start_disable_block, marker)) {
            fprintf(stderr, MSG_CLASH_END_START, marker.c_str());
            return 1;
        }
    }
    return 0;
}
