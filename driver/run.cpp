/* run.cpp -- the run driver. The steps of a run join here, in their fixed
 * order, each a small function of its own or a call into the file of its
 * concern. */
#include "driver/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

#include "analysis/call_graph_text.h"
#include "analysis/comment_parser.h"
#include "analysis/coverage.h"
#include "analysis/coverage_state.h"
#include "analysis/fast_coverage.h"
#include "driver/banner.h"
#include "driver/component_file.h"
#include "driver/console.h"
#include "driver/function_list.h"
#include "driver/options.h"
#include "driver/output_files.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "driver/usage.h"
#include "analysis/coverage_store.h"
#include "report/file_table.h"
#include "report/line_coverage.h"
#include "report/naming.h"
#include "report/summary.h"
#include "report/toolbar.h"
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

/* Step 16: the full road, module by module: order the module's functions,
 * find its infeasible lines, compute its coverage (which also writes its
 * part of the full block files), write its pages, then release its state.
 * The meter counts every component. */
static void analyseModules()
{
    ListingWorkArea listingWork;
    for (COMP *first = componentList; first != nullptr;) {
        order_func(first);
        pars = new parser(first->fileName, one_line_disable, start_disable_block, end_disable_block);
        if (markBlocks(first) && !g_bNoHTML && !bOutputLineCoverage(g_lpszOutFileExt, &listingWork))
            tvx_Exit(1);
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

/* Step 15: the report directory (an existing one is reused, so the result
 * is not checked) and the report's fixed files: images, help and toolbar. */
static void startReport()
{
    if (g_bNoHTML)
        return;
    mkdir(REPORT_DIR, 040777);
    if (!createToolBar(g_lpszOutFileExt))
        tvx_Exit(1);
}

/* Step 17: the covered-file and uncovered-file tables, each only when it has
 * files, then the summary page and the root frameset. */
static void finishReport()
{
    if (g_bNoHTML)
        return;
    int coveredCount = 0, uncoveredCount = 0;
    filename_list_node **covered = nullptr, **uncovered = nullptr;
    if (g_cl.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered) == -1)
        tvx_Exit(1);
    if (coveredCount > 0
        && !bCreateCovProfMain(COVERED_FILES_PAGE, g_lpszOutFileExt, g_lpszProjName, coveredCount, covered))
        tvx_Exit(1);
    if (uncoveredCount > 0
        && !bCreateUnCovProfMain(UNCOVERED_FILES_PAGE, g_lpszOutFileExt, g_lpszProjName, uncoveredCount,
                                 uncovered))
        tvx_Exit(1);
    if (!bCreateSummary(g_lpszProjName, ROOT_PAGE, SUMMARY_PAGE,
                        coveredCount > 0 ? COVERED_FILES_PAGE : nullptr,
                        uncoveredCount > 0 ? UNCOVERED_FILES_PAGE : nullptr, g_lpszOutFileExt))
        tvx_Exit(1);
    free(covered);
    free(uncovered);
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

    if (html_output) {
        startReport();
        startProgressMeter(numComponents);
        analyseModules();
        finishReport();
    } else {
        writeFastFiles(outputs);
    }

    closeOutputFiles(&outputs);

    freeSettingStrings();
    endProgressMeter();
    return 0;
}
