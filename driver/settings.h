/* settings.h -- the run settings.
 *
 * Process-wide globals written only by the option parser (and, for the
 * marker lists, by the component-list reader); every later stage reads them.
 * Strings marked "copy" are heap copies owned here; "argv" strings point into
 * the command line.
 */
#ifndef VEMCOV_DRIVER_SETTINGS_H
#define VEMCOV_DRIVER_SETTINGS_H

#include <string>
#include <vector>

extern char *g_lpszSPIFileName;      /* copy; static profile, "vemtra.spi" */
extern char *g_lpszDPIFileName;      /* copy; dynamic profile, "vemtra.dpi" */
extern char *g_lpszRefDPIFileName;   /* copy; reference profile of -ref, or null */
extern int compWithRef;              /* differential coverage against -ref */
extern char *g_lpszSrcRoot;          /* copy; -srcroot, or null */
extern char *g_lpszProjName;         /* copy; -prj, or null */
extern char *moduleListName;         /* argv; -comp, or null */
extern int g_bXCOUNTS;               /* -counts: dynamic counts in the listings */
extern int g_bNoPartial;             /* -nopartial */
extern int bProgressMeter;           /* progress meter on (default 1) */
extern int g_iDemangFlag;            /* -demang */
extern char *g_lpszMailName;         /* copy; web-page owner's name */
extern char *g_lpszMailAddr;         /* copy; web-page owner's address */
extern char *g_lpszTextOut;          /* argv; -txtfcvrg */
extern char *g_lpszXMLOut;           /* argv; -xmlfcvrg */
extern char *g_lpszbTextOut;         /* argv; -txtbcvrg */
extern char *g_lpszbXMLOut;          /* argv; -xmlbcvrg */
extern char *g_lpszbfullTextOut;     /* argv; -txtbcvrgfull */
extern char *g_lpszbfullXMLOut;      /* argv; -xmlbcvrgfull */
extern char *g_lpszCallGraphOut;     /* argv; -txtdcg */
extern char *g_lpszLcovOut;          /* argv; -lcov, or null */
extern char *g_lpszJsonOut;          /* argv; -json, or null */
extern char *g_lpszHtml5Out;         /* argv; -html5, or null */
extern char *g_lpszCoberturaOut;     /* argv; -cobertura, or null */
extern char *g_lpszOutDir;           /* argv; -outdir: where the HTML report goes, or null */
extern int g_bSummary;               /* -summary: totals on standard output */
extern double g_minBlockPercent;     /* -minblock, or a negative value for none */
extern double g_minFuncPercent;      /* -minfunc, or a negative value for none */
extern int g_jobs;                   /* -j: threads that share the pages' work (1: none beside the run; 0: not given) */
extern int g_bCallGraph;             /* -txtdcg given */
extern int html_output;              /* 1: full road; 0: fast text/XML road */
extern int g_bNoHTML;                /* -nohtml: full road without HTML */
extern std::vector<std::string> one_line_disable;    /* one-line markers */
extern std::vector<std::string> start_disable_block; /* region-begin markers */
extern std::vector<std::string> end_disable_block;   /* region-end markers */
extern int Infeasible_markers_specified;             /* any marker given */
extern int g_bIColorfloating;        /* -icolor floating */
extern int g_isLinksFlag;            /* any -tvx_* option: link to the TVX database */
extern const char *g_lpszDBHostName; /* argv; "tvx_host" */
extern const char *g_lpszDBName;     /* argv; "tvx_db" */
extern const char *g_lpszDBProjName; /* argv; or null */
extern const char *g_lpszDBUserName; /* argv; or null */
extern const char *g_lpszDBPasswd;   /* argv; or null */
extern const char *g_lpszFuncLinkName; /* "function_tests_viewer.php" */
extern char *g_lpszOutFileExt;       /* copy; extension of report files, "html" */
extern int sortType;                 /* initial table sort order, 0 */
extern double scale;                 /* report scale factor, 1.0 */

#endif
