/* run_state.cpp -- storage of the driver-owned run state. */
#include "driver/run_state.h"

DPI_FILE *pgofDPIFile = nullptr;
DPI_FILE *pgofRefDPIFile = nullptr;
FILE *outxml = nullptr;
FILE *outtxt = nullptr;
COMP *componentList = nullptr;
int numComponents = 0;
int isWindows = 0;
