/* run.cpp -- the run driver. The steps of a run join here, in their fixed
 * order, each a small function of its own or a call into the file of its
 * concern. */
#include "driver/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "analysis/call_graph_text.h"
#include "analysis/comment_parser.h"
#include "analysis/coverage.h"
#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"
#include "analysis/fast_coverage.h"
#include "analysis/module_report.h"
#include "driver/banner.h"
#include "driver/component_file.h"
#include "driver/console.h"
#include "driver/function_list.h"
#include "driver/options.h"
#include "driver/output_files.h"
#include "driver/run_state.h"
#include "driver/run_summary.h"
#include "driver/settings.h"
#include "driver/usage.h"
#include "report/cobertura_writer.h"
#include "report/file_handoff.h"
#include "report/html5_writer.h"
#include "report/json_writer.h"
#include "report/lcov_writer.h"
#include "report/legacy_html_writer.h"
#include "report/colors.h"
#include "report/naming.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/tool_message.h"

/* The driver's own input checks; plain sentences, not tool messages. */
static const char MSG_NO_DPI[] = "Couldn't find the dpi file %s!\n";
static const char MSG_NO_SPI[] = "Couldn't find the spi file %s!\n";

/* Step 1: the command line. A bad one shows the banner and the usage text
 * and ends the run. */
static void parseCommandLine(int argc, char **argv)
{
    if (bParseCommandLine(argc, argv))
        return;
    BANNER_Print(nullptr, BANNER_KIND_DEFAULT, stderr);
    fputs("\n", stderr);
    fflush(stderr);
    printUsage(stdout, argc > 0 && argv[0] != nullptr ? argv[0] : "vemcov");
    tvx_Exit(1);
}

/* Step 2: the source root, from -srcroot, else the environment, else the
 * current directory. */
static void setSourceRoot()
{
    char *env_root = VEMTRA_Get_Src_Root_Env();
    if (g_lpszSrcRoot != nullptr) {
        VEMTRA_Src_Root_Dir_Set(g_lpszSrcRoot, VEMTRA_expand_symbolic_links);
    } else if (env_root != nullptr) {
        VEMTRA_Src_Root_Dir_Set(env_root, VEMTRA_expand_symbolic_links);
    } else {
        char cwd[VEMTRA_PATH_MAX];
        VEMTRA_Src_Root_Dir_Set(getcwd(cwd, sizeof cwd), VEMTRA_expand_symbolic_links);
    }
    free(env_root);
}

/* Step 3 (and 6 for the reference profile): a dynamic profile, open for
 * the whole run. */
static DPI_FILE *openDynamicProfile(const char *fileName)
{
    DPI_FILE *dpi = VEMTRA_Open_Dpi_File(fileName);
    if (dpi == nullptr) {
        fprintf(stderr, MSG_NO_DPI, fileName);
        tvx_Exit(1);
    }
    return dpi;
}

/* Step 4: the full road checks early that the static profile exists. The
 * fast road finds out only when it reads the file, with another message
 * (buildComponentList); the difference is deliberate. */
static void checkStaticProfile()
{
    if (!html_output)
        return;
    FILE *spi = fopen(g_lpszSPIFileName, "r");
    if (spi == nullptr) {
        fprintf(stderr, MSG_NO_SPI, g_lpszSPIFileName);
        tvx_Exit(1);
    }
    fclose(spi);
}

/* Step 8: the modules of interest and the markers of the component file. */
static void readComponentFile()
{
    getModuleNames(moduleListName);
    if (Infeasible_markers_specified && check_NFmarkers_intersect())
        tvx_Exit(1);
}

/* Releases one "copy" setting. */
static void freeSetting(char *&setting)
{
    free(setting);
    setting = nullptr;
}

/* Step 18, the settings' part: the heap strings of the option parser. */
static void freeSettingStrings()
{
    freeSetting(g_lpszOutFileExt);
    freeSetting(g_lpszDPIFileName);
    freeSetting(g_lpszRefDPIFileName);
    freeSetting(g_lpszProjName);
    freeSetting(g_lpszMailAddr);
    freeSetting(g_lpszMailName);
}

/* Step 14: the fast road: each requested text or XML coverage file straight
 * from the dynamic profile, in the order -txtfcvrg, -xmlfcvrg, -txtbcvrg,
 * -xmlbcvrg, then the call graph. */
static void writeFastFiles(const OutputFiles &outputs)
{
    const struct {
        FILE *stream;
        int kind;
    } files[] = {
        {outputs.txtFunctions, FAST_TXT_FUNCTIONS},
        {outputs.xmlFunctions, FAST_XML_FUNCTIONS},
        {outputs.txtBlocks, FAST_TXT_BLOCKS},
        {outputs.xmlBlocks, FAST_XML_BLOCKS},
    };
    for (const auto &file : files)
        if (file.stream != nullptr && !bOutputFunctionBlockFastCoverage(file.stream, file.kind))
            tvx_Exit(1);
    if (g_bCallGraph && !CallGraph(outputs.callGraph))
        tvx_Exit(1);
}

/* Every module's path, for the modern view's common root. */
static std::vector<std::string> modulePaths()
{
    std::vector<std::string> paths;
    for (COMP *c = componentList; c != nullptr; c = c->next)
        if (c->first_in_module)
            paths.push_back(c->fileName);
    return paths;
}

/* The colours the options changed from the documented report's, which the
 * modern view's light theme takes over. */
static Html5Colours chosenColours()
{
    static const char *const DEFAULTS[8] = {nullptr, "#90ee90", "#ffffff", "#ffffff", "#fafad2",
                                            "#ffff99", "#ffcccc", "#ffffff"};
    Html5Colours colours;
    for (int c = 1; c < 8; ++c)
        if (strcmp(takeBGColor(c), DEFAULTS[c]) != 0)
            colours.byClass[c] = takeBGColor(c);
    return colours;
}

/* The threads of -j; without it, a thread that writes the files beside
 * the run's own when the run may use two processors or more (the run then
 * never writes a page itself before the thread has written the earlier
 * ones, so a failing run leaves what a run on one thread leaves). */
static int threads()
{
    if (g_jobs > 0)
        return g_jobs;
    cpu_set_t usable;
    if (sched_getaffinity(0, sizeof usable, &usable) == 0 && CPU_COUNT(&usable) >= 2)
        return 2;
    return 1;
}

/* The threads that make pages: the run's own makes them alone up to two
 * threads, the second being the one that writes the files. */
static int pageThreads()
{
    return threads() > 2 ? threads() - 2 : 0;
}

/* The writers of the full road, in the order they write: the documented
 * HTML report first, then the exports the options ask for. */
static std::vector<std::unique_ptr<ReportWriter>> reportWriters()
{
    std::vector<std::unique_ptr<ReportWriter>> writers;
    writers.push_back(std::make_unique<LegacyHtmlWriter>(pageThreads()));
    if (g_lpszLcovOut != nullptr)
        writers.push_back(std::make_unique<LcovWriter>(g_lpszLcovOut));
    if (g_lpszCoberturaOut != nullptr)
        writers.push_back(std::make_unique<CoberturaWriter>(g_lpszCoberturaOut));
    if (g_lpszJsonOut != nullptr)
        writers.push_back(std::make_unique<JsonWriter>(g_lpszJsonOut, g_lpszProjName));
    if (g_lpszHtml5Out != nullptr)
        writers.push_back(std::make_unique<Html5Writer>(g_lpszHtml5Out, modulePaths(), g_lpszProjName, compWithRef != 0,
                                                        chosenColours(), pageThreads()));
    return writers;
}

/* Step 16: the full road, module by module: order the module's functions,
 * find its infeasible lines, compute its coverage (which also writes its
 * part of the full block files), hand the module's report to every writer,
 * then release its state. The meter counts every component. */
static void analyseModules(std::vector<std::unique_ptr<ReportWriter>> &writers)
{
    bool positions = false;
    for (const auto &writer : writers)
        positions = positions || writer->readsPositions();
    for (COMP *first = componentList; first != nullptr;) {
        order_func(first);
        pars = new parser(first->fileName, one_line_disable, start_disable_block, end_disable_block);
        bool analysed = markBlocks(first);
        if (positions)
            collectModuleDetails(&currentModule, g_cl, pars);
        for (const auto &writer : writers)
            writer->module(currentModule, analysed);
        delete pars;
        pars = nullptr;
        tickProgressMeter();

        g_cl.deleteCurrentFile();
        releaseModuleTables();

        COMP *next = first->next;
        while (next != nullptr && strcmp(next->fileName, first->fileName) == 0) {
            tickProgressMeter();
            next = next->next;
        }
        first = next;
    }
}

/* Steps 15 to 17: the writers' start (the report directory and its fixed
 * files come before the meter starts), the modules, the writers' end. */
static RunReport writeFullRoad()
{
    /* The full block files and the exports are written module by module
     * beside the pages, so the exports are opened after the start. */
    const bool writesPages = g_bNoHTML == 0 || g_lpszHtml5Out != nullptr;
    if (writesPages && threads() > 1)
        fileHandoffStart(g_jobs > 1, {&outtxt, &outxml});
    std::vector<std::unique_ptr<ReportWriter>> writers = reportWriters();
    for (const auto &writer : writers)
        writer->beginRun();
    startProgressMeter(numComponents);
    analyseModules(writers);
    const RunReport run = runReport();
    for (const auto &writer : writers)
        writer->endRun(run);
    fileHandoffFinish();
    return run;
}

int vemcov_Run(int argc, char **argv)
{
    std::set_new_handler(vemcov_Out_Of_Memory);

    parseCommandLine(argc, argv);
    setSourceRoot();

    pgofDPIFile = openDynamicProfile(g_lpszDPIFileName);
    checkStaticProfile();
    OutputFiles outputs;
    openOutputFiles(&outputs);
    if (compWithRef)
        pgofRefDPIFile = openDynamicProfile(g_lpszRefDPIFileName);
    /* Messages raised while the profiles were opened carry no tool name. */
    VEMTRA_Tool_Set_Name(argv[0]);
    readComponentFile();
    buildComponentList(g_lpszSPIFileName);

    RunReport run = {};
    if (html_output)
        run = writeFullRoad();
    else
        writeFastFiles(outputs);

    closeOutputFiles(&outputs);

    freeSettingStrings();
    endProgressMeter();
    /* After every output is written: the totals, then the gates. */
    if (g_bSummary)
        printRunSummary(stdout, run);
    return coverageGateStatus(run, g_minBlockPercent, g_minFuncPercent);
}
