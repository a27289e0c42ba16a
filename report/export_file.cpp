/* export_file.cpp -- creating an export writer's file. */
#include "report/export_file.h"

#include "driver/console.h"
#include "report/file_handoff.h"

static const char MSG_CANNOT_OPEN[] = "Couldn't open file %s for output!\n";

FILE *createExportFile(const char *path)
{
    /* After every page handed off so far, as when the run writes them. */
    fileHandoffWait();
    FILE *file = fopen(path, "w");
    if (file == nullptr) {
        fprintf(stderr, MSG_CANNOT_OPEN, path);
        tvx_Exit(1);
    }
    return handedOffStream(file, path);
}
