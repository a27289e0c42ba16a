/* output_files.cpp -- opening and closing the text and XML output files. */
#include "driver/output_files.h"

#include "analysis/xml_escape.h"
#include "driver/console.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char MSG_CANNOT_OPEN[] = "Couldn't open file %s for output!\n";

/* The two forms of the PROJECT opening: the full block file alone has no
 * blanks around its equals sign. */
static const char PROJECT_OPEN[] = "<PROJECT name = \"";
static const char PROJECT_OPEN_FULL[] = "<PROJECT name=\"";
static const char PROJECT_OPEN_END[] = "\">\n";
static const char PROJECT_CLOSE[] = "</PROJECT>\n";

/* Opens `path` when it was given; ends the run when it cannot be opened. */
static FILE *openRequested(const char *path)
{
    if (path == nullptr)
        return nullptr;
    FILE *file = fopen(path, "w");
    if (file == nullptr) {
        fprintf(stderr, MSG_CANNOT_OPEN, path);
        tvx_Exit(1);
    }
    return file;
}

static void writeProjectOpening(FILE *file, const char *opening)
{
    if (file == nullptr)
        return;
    fputs(opening, file);
    if (g_lpszProjName != nullptr)
        escapeXML(file, g_lpszProjName);
    else
        fputs("(null)", file);
    fputs(PROJECT_OPEN_END, file);
}

void openOutputFiles(OutputFiles *files)
{
    files->xmlFunctions = openRequested(g_lpszXMLOut);
    writeProjectOpening(files->xmlFunctions, PROJECT_OPEN);
    files->txtFunctions = openRequested(g_lpszTextOut);
    outxml = openRequested(g_lpszbfullXMLOut);
    writeProjectOpening(outxml, PROJECT_OPEN_FULL);
    outtxt = openRequested(g_lpszbfullTextOut);
    files->xmlBlocks = openRequested(g_lpszbXMLOut);
    writeProjectOpening(files->xmlBlocks, PROJECT_OPEN);
    files->txtBlocks = openRequested(g_lpszbTextOut);
    files->callGraph = openRequested(g_lpszCallGraphOut);
}

static void closeXml(FILE *file, const char *path)
{
    if (file == nullptr)
        return;
    fputs(PROJECT_CLOSE, file);
    checked_close_output(file, path);
}

static void closeText(FILE *file, const char *path)
{
    if (file != nullptr)
        checked_close_output(file, path);
}

void closeOutputFiles(OutputFiles *files)
{
    closeXml(files->xmlFunctions, g_lpszXMLOut);
    closeXml(outxml, g_lpszbfullXMLOut);
    closeXml(files->xmlBlocks, g_lpszbXMLOut);
    closeText(files->txtFunctions, g_lpszTextOut);
    closeText(outtxt, g_lpszbfullTextOut);
    closeText(files->txtBlocks, g_lpszbTextOut);
    closeText(files->callGraph, g_lpszCallGraphOut);
    *files = OutputFiles{};
    outxml = nullptr;
    outtxt = nullptr;
}
