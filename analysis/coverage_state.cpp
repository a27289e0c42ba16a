/* coverage_state.cpp -- storage of the module tables and run totals. */
#include "analysis/coverage_state.h"

func **fileFuncs = nullptr;
func **fileFuncsCovered = nullptr;
func **fileFuncsUncovered = nullptr;
int numFileFuncs = 0;
int numFileFuncsCovered = 0;
int numFileFuncsUncovered = 0;

double functionCoverage = 0.0;
double blockCoverage = 0.0;

unsigned totalNumberOfFiles = 0;
unsigned totalNumberOfFilesCovered = 0;
unsigned totalNumberOfProcs = 0;
unsigned totalNumberOfProcsCovered = 0;
unsigned totalNumberOfBlocks = 0;
unsigned totalNumberOfBlocksCovered = 0;

COMP *first_func_line = nullptr;
parser *pars = nullptr;

blocks *lb_blockNum = nullptr;
unsigned s_blockNum = 0;
