/* images.cpp -- the report's images, written from their byte tables. */
#include "report/images.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "report/image_data.h"
#include "report/naming.h"
#include "report/report_files.h"
#include "shared/vemtra/tallyfold/checked_io.h"

const char HOME_IMAGE[] = "__Home.gif";
const char HELP_IMAGE[] = "__Help.gif";
const char LOGO_IMAGE[] = "__TarskR.gif";
const char SPACER_IMAGE[] = "__Spacer.gif";

/* Writes one byte; a failure is reported with the byte's index in the file
 * and the writing goes on. */
static void putImageByte(FILE *image, int index, unsigned char byte)
{
    if (fputc(byte, image) == EOF)
        fprintf(stdout, "ERR at %d %d\n", index, byte);
}

/* Images are written unbuffered, so that a byte that cannot be written is
 * reported at its own index (see putImageBytes). */
static FILE *createImage(const char *name, const char *failureFormat)
{
    std::string path = std::string(REPORT_DIR) + "/" + name;
    FILE *image = openReportFile(path.c_str());
    if (image == nullptr) {
        fprintf(stderr, failureFormat, name);
        return nullptr;
    }
    setvbuf(image, nullptr, _IONBF, 0);
    return image;
}

/* Writes an image's bytes in one piece; from the first byte the file does
 * not take on, one at a time, each failure reported at its index. */
static void putImageBytes(FILE *image, const unsigned char *bytes, int size)
{
    int written = static_cast<int>(fwrite(bytes, 1, static_cast<size_t>(size), image));
    for (int i = written; i < size; ++i)
        putImageByte(image, i, bytes[i]);
}

static void closeImage(FILE *image, const char *name)
{
    std::string path = std::string(REPORT_DIR) + "/" + name;
    checked_close_rewritten(image, path.c_str());
}

static bool writeImage(const char *name, const char *failureFormat,
                       const unsigned char *bytes, int size)
{
    FILE *image = createImage(name, failureFormat);
    if (image == nullptr)
        return false;
    putImageBytes(image, bytes, size);
    closeImage(image, name);
    return true;
}

/* The home image keeps only its two ends as data; the run of zeros between
 * them (the unused black entries of its colour table) is written by a loop. */
static bool writeHomeImage()
{
    FILE *image = createImage(HOME_IMAGE, "Unable to create the Home Icon %s!\n");
    if (image == nullptr)
        return false;
    std::vector<unsigned char> bytes(HOME_GIF_HEAD_SIZE + HOME_GIF_ZERO_RUN + HOME_GIF_TAIL_SIZE, 0);
    std::copy(HOME_GIF_HEAD, HOME_GIF_HEAD + HOME_GIF_HEAD_SIZE, bytes.begin());
    std::copy(HOME_GIF_TAIL, HOME_GIF_TAIL + HOME_GIF_TAIL_SIZE, bytes.end() - HOME_GIF_TAIL_SIZE);
    putImageBytes(image, bytes.data(), static_cast<int>(bytes.size()));
    closeImage(image, HOME_IMAGE);
    return true;
}

bool bWriteReportImages()
{
    /* The help icon shares the home icon's message. */
    return writeHomeImage()
        && writeImage(HELP_IMAGE, "Unable to create the Home Icon %s!\n", HELP_GIF, sizeof HELP_GIF)
        && writeImage(LOGO_IMAGE, "Unable to create Tarsk Logo %s!\n", LOGO_GIF, sizeof LOGO_GIF)
        && writeImage(SPACER_IMAGE, "Unable to create Spacer image %s!\n", SPACER_GIF, sizeof SPACER_GIF);
}
