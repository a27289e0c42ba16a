/* options.cpp -- the command-line parser: one table of the options in the
 * order they are compared, each with its rule for a missing value. */
#include "driver/options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "driver/banner.h"
#include "driver/console.h"
#include "driver/settings.h"
#include "driver/usage.h"
#include "report/colors.h"

/* Messages of the parser, word for word. */
static const char MSG_WRONG_OPTION[] = "ERROR: wrong option %s is specified.\n";
static const char MSG_REF_OVERRIDES_NOPARTIAL[] = "WARNING: option -ref overrides option -nopartial.\n";
static const char MSG_REF_OVERRIDES_COUNTS[] = "WARNING: option -ref overrides option -counts.\n";
static const char MSG_NO_COMPONENT_FILE[] = "ERROR: no component-list file specified.\n";
static const char MSG_NO_BCOLOR[] = "ERROR: no html color specified for the uncovered blocks.\n";
static const char MSG_NO_CCOLOR[] = "ERROR: no html color specified for the covered code.\n";
static const char MSG_NO_FCOLOR[] = "ERROR: no html color specified for the uncovered functions.\n";
static const char MSG_NO_PCOLOR[] = "ERROR: no html color specified for the partially-covered code.\n";
static const char MSG_NO_UCOLOR[] = "ERROR: no html color specified for the unknown code.\n";
static const char MSG_NO_XCOLOR[] = "ERROR: no html color specified for the not feasible code.\n";
static const char MSG_NO_ICOLOR[] = "ERROR: no html color specified for the information lines.\n";
static const char MSG_NO_TEXT_FILE[] = "ERROR: file name for text output is not specified.\n";
static const char MSG_NO_XML_FILE[] = "ERROR: file name for XML output is not specified.\n";
static const char MSG_NO_TEXT_FULL_FILE[] = "ERROR: file name for text block coverage output is not specified.\n";
static const char MSG_NO_XML_FULL_FILE[] = "ERROR: file name for XML block coverage output is not specified.\n";
static const char MSG_NO_ONE_LINE_MARKER[] = "ERROR: comment for disable line is not specified.\n";
static const char MSG_NO_END_MARKER[] = "ERROR: comment for end disable block is not specified.\n";
static const char MSG_NO_BEGIN_MARKER[] = "ERROR: comment for begin disable block is not specified.\n";
static const char MSG_NO_DB_USER[] = "ERROR: user name to access the database has to be specified for this option.\n";
static const char MSG_NO_DB_PASSWORD[] = "ERROR: password to access the database has to be specified for this option.\n";
static const char MSG_NO_CALL_GRAPH_FILE[] = "ERROR: file name for CallGraph output is not specified.\n";

static const char MSG_BAD_PERCENT[] = "ERROR: %s takes a percentage from 0 to 100, not '%s'.\n";
static const char MSG_BAD_JOBS[] = "ERROR: -j takes a number of threads from 1 to 64, not '%s'.\n";
static const char MSG_FULL_REPORT_ONLY[] =
    "ERROR: option %s works on the full report only; it cannot be combined with %s.\n";

/* The word that makes -icolor leave information lines uncoloured. */
static const char ICOLOR_FLOATING[] = "floating";

/* Arguments that ask for the usage text, and for the External options. */
static const char *const HELP_WORDS[] = {"-?", "/?", "-help", "/help", "-h", "/h"};
static const char *const HELPX_WORDS[] = {"-helpx", "/helpx"};

/* Words that print the version, and the usage text as plain help. */
static const char *const VERSION_WORDS[] = {"--version", "-version"};
static const char *const PLAIN_HELP_WORDS[] = {"--help"};

/* A coverage gate's percentage: a decimal number from 0 to 100, whole. A
 * value that is not ends the run with status 1. */
static double parseGate(const char *option, const char *value)
{
    char *end = nullptr;
    double percent = strtod(value, &end);
    if (end == value || *end != '\0' || !(percent >= 0.0 && percent <= 100.0)) {
        fprintf(stderr, MSG_BAD_PERCENT, option, value);
        tvx_Exit(1);
    }
    return percent;
}

/* The number of threads of -j: a whole number from 1 to 64. A value that
 * is not ends the run with status 1. */
static int parseJobs(const char *value)
{
    char *end = nullptr;
    long jobs = strtol(value, &end, 10);
    if (end == value || *end != '\0' || jobs < 1 || jobs > 64) {
        fprintf(stderr, MSG_BAD_JOBS, value);
        tvx_Exit(1);
    }
    return static_cast<int>(jobs);
}

/* How an option treats the argument after it. */
enum ValueRule {
    NO_VALUE,          /* a switch */
    VALUE_OR_USAGE,    /* no next argument: the scan fails and usage is shown */
    VALUE_OR_MESSAGE,  /* option is the last argument: its message, status 1 */
    OPTIONAL_VALUE     /* the next argument is taken when there is one */
};

struct OptionRule {
    const char *name;
    ValueRule rule;
    const char *missing;          /* message of VALUE_OR_MESSAGE */
    void (*apply)(char *value);   /* value null for a switch or an absent optional value */
};

/* A heap copy of `text`; out of memory ends the run with status 2. */
static char *copyString(const char *text)
{
    char *copy = strdup(text);
    if (copy == nullptr)
        vemcov_Out_Of_Memory();
    return copy;
}

/* Replaces a "copy" setting, freeing the previous copy. */
static void replaceCopy(char *&setting, const char *value)
{
    free(setting);
    setting = copyString(value);
}

static void addMarker(std::vector<std::string> &list, const char *marker)
{
    list.push_back(marker);
    Infeasible_markers_specified = 1;
}

static const OptionRule OPTIONS[] = {
    {"-spi", VALUE_OR_USAGE, nullptr, [](char *v) { replaceCopy(g_lpszSPIFileName, v); }},
    {"-dpi", VALUE_OR_USAGE, nullptr, [](char *v) { replaceCopy(g_lpszDPIFileName, v); }},
    {"-ref", VALUE_OR_USAGE, nullptr,
     [](char *v) {
         replaceCopy(g_lpszRefDPIFileName, v);
         compWithRef = 1;
     }},
    {"-srcroot", VALUE_OR_USAGE, nullptr, [](char *v) { replaceCopy(g_lpszSrcRoot, v); }},
    {"-demang", NO_VALUE, nullptr, [](char *) { g_iDemangFlag = 1; }},
    {"-prj", VALUE_OR_USAGE, nullptr, [](char *v) { replaceCopy(g_lpszProjName, v); }},
    {"-comp", VALUE_OR_MESSAGE, MSG_NO_COMPONENT_FILE, [](char *v) { moduleListName = v; }},
    {"-counts", NO_VALUE, nullptr, [](char *) { g_bXCOUNTS = 1; }},
    {"-nopartial", NO_VALUE, nullptr, [](char *) { g_bNoPartial = 1; }},
    {"-nopmeter", NO_VALUE, nullptr, [](char *) { bProgressMeter = 0; }},
    {"-maddr", VALUE_OR_USAGE, nullptr,
     [](char *v) {
         replaceCopy(g_lpszMailAddr, v);
         /* Until a name is given, the address is the owner's name too. */
         if (g_lpszMailName == nullptr)
             g_lpszMailName = copyString(v);
     }},
    {"-mname", VALUE_OR_USAGE, nullptr, [](char *v) { replaceCopy(g_lpszMailName, v); }},
    {"-bcolor", VALUE_OR_MESSAGE, MSG_NO_BCOLOR, [](char *v) { SetBGColor(COLOR_UNCOVERED_BLOCK, v); }},
    {"-ccolor", VALUE_OR_MESSAGE, MSG_NO_CCOLOR, [](char *v) { SetBGColor(COLOR_COVERED, v); }},
    {"-fcolor", VALUE_OR_MESSAGE, MSG_NO_FCOLOR, [](char *v) { SetBGColor(COLOR_UNCOVERED_FUNCTION, v); }},
    {"-pcolor", VALUE_OR_MESSAGE, MSG_NO_PCOLOR, [](char *v) { SetBGColor(COLOR_PARTIAL, v); }},
    {"-ucolor", VALUE_OR_MESSAGE, MSG_NO_UCOLOR, [](char *v) { SetBGColor(COLOR_UNKNOWN, v); }},
    {"-xcolor", VALUE_OR_MESSAGE, MSG_NO_XCOLOR, [](char *v) { SetBGColor(COLOR_INFEASIBLE, v); }},
    {"-icolor", VALUE_OR_MESSAGE, MSG_NO_ICOLOR,
     [](char *v) {
         if (strcmp(v, ICOLOR_FLOATING) == 0)
             g_bIColorfloating = 1;
         else
             SetBGColor(COLOR_INFO, v);
     }},
    {"-txtfcvrg", VALUE_OR_MESSAGE, MSG_NO_TEXT_FILE,
     [](char *v) {
         g_lpszTextOut = v;
         html_output = 0;
     }},
    {"-xmlfcvrg", VALUE_OR_MESSAGE, MSG_NO_XML_FILE,
     [](char *v) {
         g_lpszXMLOut = v;
         html_output = 0;
     }},
    {"-txtbcvrgfull", VALUE_OR_MESSAGE, MSG_NO_TEXT_FULL_FILE, [](char *v) { g_lpszbfullTextOut = v; }},
    {"-xmlbcvrgfull", VALUE_OR_MESSAGE, MSG_NO_XML_FULL_FILE, [](char *v) { g_lpszbfullXMLOut = v; }},
    {"-nohtml", NO_VALUE, nullptr, [](char *) { g_bNoHTML = 1; }},
    {"-txtbcvrg", VALUE_OR_MESSAGE, MSG_NO_TEXT_FILE,
     [](char *v) {
         g_lpszbTextOut = v;
         html_output = 0;
     }},
    {"-xmlbcvrg", VALUE_OR_MESSAGE, MSG_NO_XML_FILE,
     [](char *v) {
         g_lpszbXMLOut = v;
         html_output = 0;
     }},
    {"-onelinedsbl", VALUE_OR_MESSAGE, MSG_NO_ONE_LINE_MARKER, [](char *v) { addMarker(one_line_disable, v); }},
    {"-endblkdsbl", VALUE_OR_MESSAGE, MSG_NO_END_MARKER, [](char *v) { addMarker(end_disable_block, v); }},
    {"-beginblkdsbl", VALUE_OR_MESSAGE, MSG_NO_BEGIN_MARKER, [](char *v) { addMarker(start_disable_block, v); }},
    {"-tvx_host", OPTIONAL_VALUE, nullptr,
     [](char *v) {
         g_isLinksFlag = 1;
         if (v != nullptr)
             g_lpszDBHostName = v;
     }},
    {"-tvx_db_name", OPTIONAL_VALUE, nullptr,
     [](char *v) {
         g_isLinksFlag = 1;
         if (v != nullptr)
             g_lpszDBName = v;
     }},
    {"-tvx_db_prj", OPTIONAL_VALUE, nullptr,
     [](char *v) {
         g_isLinksFlag = 1;
         if (v != nullptr)
             g_lpszDBProjName = v;
     }},
    {"-tvx_user", VALUE_OR_MESSAGE, MSG_NO_DB_USER,
     [](char *v) {
         g_isLinksFlag = 1;
         g_lpszDBUserName = v;
     }},
    {"-tvx_passwd", VALUE_OR_MESSAGE, MSG_NO_DB_PASSWORD,
     [](char *v) {
         g_isLinksFlag = 1;
         g_lpszDBPasswd = v;
     }},
    {"-txtdcg", VALUE_OR_MESSAGE, MSG_NO_CALL_GRAPH_FILE,
     [](char *v) {
         g_bCallGraph = 1;
         html_output = 0;
         g_lpszCallGraphOut = v;
     }},
    /* vemcov's own options, after the documented ones. */
    {"-lcov", VALUE_OR_USAGE, nullptr, [](char *v) { g_lpszLcovOut = v; }},
    {"-outdir", VALUE_OR_USAGE, nullptr, [](char *v) { g_lpszOutDir = v; }},
    {"-cobertura", VALUE_OR_USAGE, nullptr, [](char *v) { g_lpszCoberturaOut = v; }},
    {"-json", VALUE_OR_USAGE, nullptr, [](char *v) { g_lpszJsonOut = v; }},
    {"-html5", VALUE_OR_USAGE, nullptr, [](char *v) { g_lpszHtml5Out = v; }},
    {"-summary", NO_VALUE, nullptr, [](char *) { g_bSummary = 1; }},
    {"-minblock", VALUE_OR_USAGE, nullptr, [](char *v) { g_minBlockPercent = parseGate("-minblock", v); }},
    {"-minfunc", VALUE_OR_USAGE, nullptr, [](char *v) { g_minFuncPercent = parseGate("-minfunc", v); }},
    {"-j", VALUE_OR_USAGE, nullptr, [](char *v) { g_jobs = parseJobs(v); }},
};

template <size_t N>
static bool isOneOf(const char *arg, const char *const (&words)[N])
{
    for (const char *word : words)
        if (strcmp(arg, word) == 0)
            return true;
    return false;
}

static const OptionRule *findOption(const char *arg)
{
    for (const OptionRule &option : OPTIONS)
        if (strcmp(arg, option.name) == 0)
            return &option;
    return nullptr;
}

/* Step 1: the defaults that the parser sets itself. */
static void setDefaults()
{
    g_lpszSPIFileName = copyString("vemtra.spi");
    g_lpszDPIFileName = copyString("vemtra.dpi");
    g_lpszOutFileExt = copyString("html");
    scale = 1.0;
    sortType = 0;
    g_bXCOUNTS = 0;
    g_bNoPartial = 0;
    g_iDemangFlag = 0;
    bProgressMeter = 1;
}

/* Steps 3 and 4: the scan. Returns false when usage must be shown. */
static bool scanArguments(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const char *arg = argv[i];
        if (isOneOf(arg, HELP_WORDS))
            return false;
        if (isOneOf(arg, VERSION_WORDS)) {
            printf("vemcov %s\n", VEMCOV_VERSION);
            tvx_Exit(0);
        }
        if (isOneOf(arg, PLAIN_HELP_WORDS)) {
            printUsage(stdout, argv[0]);
            tvx_Exit(0);
        }
        if (isOneOf(arg, HELPX_WORDS)) {
            printExternalOptions(stdout);
            tvx_Exit(1);
        }
        const OptionRule *option = findOption(arg);
        if (option == nullptr) {
            fprintf(stderr, MSG_WRONG_OPTION, arg);
            return false;
        }
        bool has_value = i + 1 < argc;
        switch (option->rule) {
        case NO_VALUE:
            option->apply(nullptr);
            break;
        case VALUE_OR_USAGE:
            if (!has_value)
                return false;
            option->apply(argv[++i]);
            break;
        case VALUE_OR_MESSAGE:
            if (!has_value) {
                fputs(option->missing, stderr);
                tvx_Exit(1);
            }
            option->apply(argv[++i]);
            break;
        case OPTIONAL_VALUE:
            option->apply(has_value ? argv[++i] : nullptr);
            break;
        }
    }
    return true;
}

/* The first export or gate option given, or null. */
static const char *exportOption()
{
    if (g_lpszLcovOut != nullptr)
        return "-lcov";
    if (g_lpszCoberturaOut != nullptr)
        return "-cobertura";
    if (g_lpszJsonOut != nullptr)
        return "-json";
    if (g_bSummary)
        return "-summary";
    if (g_minBlockPercent >= 0.0)
        return "-minblock";
    if (g_minFuncPercent >= 0.0)
        return "-minfunc";
    return nullptr;
}

/* Exports and gates are made from the full report's numbers: with -ref
 * (differential numbers) or on the fast road they are refused. The modern
 * view shows differential numbers as the documented report does, so only
 * the fast road refuses it. */
static void refuseExportsOffTheFullReport()
{
    const char *option = exportOption();
    bool view = option == nullptr && g_lpszHtml5Out != nullptr;
    if (view)
        option = "-html5";
    if (option == nullptr)
        return;
    const char *other = nullptr;
    if (compWithRef && !view)
        other = "-ref";
    else if (g_lpszTextOut != nullptr)
        other = "-txtfcvrg";
    else if (g_lpszXMLOut != nullptr)
        other = "-xmlfcvrg";
    else if (g_lpszbTextOut != nullptr)
        other = "-txtbcvrg";
    else if (g_lpszbXMLOut != nullptr)
        other = "-xmlbcvrg";
    else if (g_bCallGraph)
        other = "-txtdcg";
    if (other == nullptr)
        return;
    fprintf(stderr, MSG_FULL_REPORT_ONLY, option, other);
    tvx_Exit(1);
}

bool bParseCommandLine(int argc, char **argv)
{
    /* 1. Defaults; 2. a bare run skips the scan. */
    setDefaults();
    if (argc >= 2 && !scanArguments(argc, argv))
        return false;

    /* 5. The web-page owner. */
    if (g_lpszMailAddr == nullptr)
        g_lpszMailAddr = copyString("nobody");
    if (g_lpszMailName == nullptr)
        g_lpszMailName = copyString("Nobody");

    /* 6. Differential coverage shows neither partial colouring nor counts. */
    if (compWithRef) {
        if (g_bNoPartial) {
            fputs(MSG_REF_OVERRIDES_NOPARTIAL, stderr);
            g_bNoPartial = 0;
        }
        if (g_bXCOUNTS) {
            fputs(MSG_REF_OVERRIDES_COUNTS, stderr);
            g_bXCOUNTS = 0;
        }
    }

    /* The exports and gates read the full report's numbers. */
    refuseExportsOffTheFullReport();

    /* 7. After every colour option, so -ccolor counts wherever it stands. */
    if (g_bNoPartial)
        SetNoPartialColor();

    /* 8. The banner. */
    BANNER_Print(nullptr, BANNER_KIND_DEFAULT, stderr);
    fputs("\n", stderr);
    fflush(stderr);
    return true;
}
