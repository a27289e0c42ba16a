/* settings.cpp -- storage and static defaults of the run settings. The heap
 * defaults ("vemtra.spi", owner names, ...) are set by the option parser. */
#include "driver/settings.h"

char *g_lpszSPIFileName = nullptr;
char *g_lpszDPIFileName = nullptr;
char *g_lpszRefDPIFileName = nullptr;
int compWithRef = 0;
char *g_lpszSrcRoot = nullptr;
char *g_lpszProjName = nullptr;
char *moduleListName = nullptr;
int g_bXCOUNTS = 0;
int g_bNoPartial = 0;
int bProgressMeter = 1;
int g_iDemangFlag = 0;
char *g_lpszMailName = nullptr;
char *g_lpszMailAddr = nullptr;
char *g_lpszTextOut = nullptr;
char *g_lpszXMLOut = nullptr;
char *g_lpszbTextOut = nullptr;
char *g_lpszbXMLOut = nullptr;
char *g_lpszbfullTextOut = nullptr;
char *g_lpszbfullXMLOut = nullptr;
char *g_lpszCallGraphOut = nullptr;
char *g_lpszLcovOut = nullptr;
char *g_lpszJsonOut = nullptr;
char *g_lpszCoberturaOut = nullptr;
char *g_lpszOutDir = nullptr;
int g_bSummary = 0;
double g_minBlockPercent = -1.0;
double g_minFuncPercent = -1.0;
int g_bCallGraph = 0;
int html_output = 1;
int g_bNoHTML = 0;
std::vector<std::string> one_line_disable;
std::vector<std::string> start_disable_block;
std::vector<std::string> end_disable_block;
int Infeasible_markers_specified = 0;
int g_bIColorfloating = 0;
int g_isLinksFlag = 0;
const char *g_lpszDBHostName = "tvx_host";
const char *g_lpszDBName = "tvx_db";
const char *g_lpszDBProjName = nullptr;
const char *g_lpszDBUserName = nullptr;
const char *g_lpszDBPasswd = nullptr;
const char *g_lpszFuncLinkName = "function_tests_viewer.php";
char *g_lpszOutFileExt = nullptr;
int sortType = 0;
double scale = 1.0;
