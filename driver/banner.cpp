/* banner.cpp -- product texts, the banner, and the search for the
 * installed compiler package's identifier. */
#include "driver/banner.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "shared/vemtra/tallyfold/checked_io.h"

#if defined(__x86_64__)
#define VEMCOV_TARGET_ARCH "x86-64"
#elif defined(__aarch64__)
#define VEMCOV_TARGET_ARCH "AArch64"
#elif defined(__i386__)
#define VEMCOV_TARGET_ARCH "IA-32"
#else
#define VEMCOV_TARGET_ARCH "this platform"
#endif

/* The product texts. The build date is fixed so that every run of a build
 * prints the same bytes. */
static const char PRODUCT_NAME[] = "Tarsk(R) Compilers code-coverage tool";
static const char INFO_STRING[] = "Tarsk(R) Compilers code-coverage tool for C, C++ and Fortran applications running on "
                                  VEMCOV_TARGET_ARCH ", Version 1.0 Build 20250107 %s\n";
static const char PROTECTION_STRING[] = "Copyright (C) 2025 Tarsk Compilers. All rights reserved.\n";

/* The installed compiler package: driver programs found along PATH, and
 * the support files, two levels above the driver's directory, that name
 * the package. */
static const char C_DRIVER[] = "tarskcc";
static const char FORTRAN_DRIVER[] = "tarskfort";
static const char DOC_DIR[] = "doc";
static const char C_SUPPORT_FILE[] = "tarskcc_support.txt";
static const char FORTRAN_SUPPORT_FILE[] = "tarskfort_support.txt";
static const char PACKAGE_ID_KEY[] = "Package ID:";

/* Room for the info line; longer lines are cut. */
static const size_t BANNER_LINE_MAX = 320;

const char *VERSION_Get_Product_Name()
{
    return PRODUCT_NAME;
}

const char *VERSION_Get_Info_String()
{
    return INFO_STRING;
}

const char *VERSION_Get_Protection_String()
{
    return PROTECTION_STRING;
}

/* The directory of the program `name` as found along PATH (a name with a
 * path separator is taken as it is), or false when it is not found. */
static bool findProgramDir(const char *name, std::string &dir)
{
    std::string found;
    if (strpbrk(name, "\\/:") != nullptr) {
        found = name;
    } else {
        const char *path = getenv("PATH");
        if (path == nullptr)
            return false;
        for (const char *entry = path;; ++entry) {
            const char *end = strchr(entry, ':');
            std::string candidate(entry, end != nullptr ? end : entry + strlen(entry));
            candidate = (candidate.empty() ? std::string(".") : candidate) + "/" + name;
            struct stat info;
            if (stat(candidate.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(candidate.c_str(), X_OK) == 0) {
                found = candidate;
                break;
            }
            if (end == nullptr)
                return false;
            entry = end;
        }
    }
    size_t slash = found.find_last_of('/');
    dir = slash == std::string::npos ? std::string(".") : found.substr(0, slash);
    return true;
}

/* The identifier after "Package ID:" in the support file: blanks and tabs
 * after the colon are skipped, and the identifier ends at the next blank,
 * tab, carriage return or newline. Empty when no line holds the key. */
static std::string readPackageId(const std::string &support_file)
{
    FILE *file = checked_fopen(support_file.c_str(), "r");
    if (file == nullptr)
        return std::string();
    std::string id;
    char *line = nullptr;
    size_t capacity = 0;
    while (getline(&line, &capacity, file) != -1) {
        const char *key = strstr(line, PACKAGE_ID_KEY);
        if (key == nullptr)
            continue;
        const char *start = key + strlen(PACKAGE_ID_KEY);
        start += strspn(start, " \t");
        id.assign(start, strcspn(start, " \t\r\n"));
        break;
    }
    free(line);
    checked_fclose(file);
    return id;
}

const char *BANNER_Version_Package_Id(int fortran)
{
    static std::string package_id;
    package_id.clear();
    std::string dir;
    if (findProgramDir(fortran ? FORTRAN_DRIVER : C_DRIVER, dir)) {
        std::string support = dir + "/../../" + DOC_DIR + "/" + (fortran ? FORTRAN_SUPPORT_FILE : C_SUPPORT_FILE);
        package_id = readPackageId(support);
    }
    return package_id.c_str();
}

void BANNER_Print(const char *version, int kind, FILE *stream)
{
    /* 1. The language of the package to name. */
    const char *info = VERSION_Get_Info_String();
    bool fortran = kind == BANNER_KIND_FORTRAN || (kind == BANNER_KIND_DEFAULT && strstr(info, "Fortran") != nullptr);

    /* 2. Its identifier; the default kind falls back on the other language. */
    std::string id = BANNER_Version_Package_Id(fortran);
    if (id.empty() && kind == BANNER_KIND_DEFAULT)
        id = BANNER_Version_Package_Id(!fortran);

    /* 3. The package text. */
    std::string package = id.empty() ? std::string() : std::string(PACKAGE_ID_KEY) + " " + id;

    /* 4. The two lines. */
    char line[BANNER_LINE_MAX];
    int used = 0;
    if (version != nullptr)
        used = snprintf(line, sizeof line, "%s ", version);
    if (used >= 0 && static_cast<size_t>(used) < sizeof line)
        snprintf(line + used, sizeof line - used, INFO_STRING, package.c_str());
    fputs(line, stream);
    fputs(VERSION_Get_Protection_String(), stream);
    fflush(stream);
}
