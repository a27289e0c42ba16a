/* src_root.cpp -- the source root, path simplification and the mapping of
 * directories to their physical paths. */
#include "shared/vemtra/client/src_root.h"

#include <cstdlib>
#include <climits>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/tool_message.h"

char VEMTRA_src_root_dir[VEMTRA_PATH_MAX + 2] = "";
int32_t VEMTRA_src_root_dir_len = 0;
int32_t VEMTRA_expand_symbolic_links = 1;
int32_t VEMTRA_ignore_src_dir_names = 0;

/* The one-entry cache of the directory mapping. */
static std::string last_dir_checked;
static std::string last_dir_mapped;
static int32_t last_dir_was_mapped = 0;

/* Shared result buffers: each result stays valid until the next call of the
 * routine that returned it. */
static std::string simplified_path;
static std::string physical_dir;
static std::string physical_file_name;
/* The name the last physical file name was made from: a module's functions
 * are fetched one after the other under one file name. */
static std::string physical_file_name_of;

/* Removes the last directory of `out` for a "../"; false means give up. */
static bool vemtra_Drop_Last_Dir(std::string &out)
{
    if (out.size() < 2 || out.back() != '/')
        return false;
    out.pop_back();
    size_t previous = out.rfind('/');
    if (previous == std::string::npos)
        return false;
    out.erase(previous + 1);
    return out.size() != 2;
}

/* Tidies the last component: "/." loses its '.', and "/.." (not at the very
 * start) goes together with the directory before it. */
static bool vemtra_Tidy_Last_Component(std::string &out)
{
    size_t last = out.rfind('/');
    if (last == std::string::npos)
        return true;
    std::string component = out.substr(last);
    if (component == "/.") {
        out.pop_back();
    } else if (component == "/.." && last != 0) {
        out.erase(last);
        size_t previous = out.rfind('/');
        if (previous == std::string::npos)
            return false;
        out.erase(previous + 1);
    }
    return true;
}

const char *vemtra_Simplify_Path(const char *path)
{
    if (path == nullptr || strchr(path, '.') == nullptr)
        return path;

    std::string out;
    for (size_t i = 0; path[i] != '\0';) {
        if (path[i] == '.') {
            if (path[i + 1] == '/' && (i == 0 || path[i - 1] == '/')) {
                i += 2;
                continue;
            }
            if (path[i + 1] == '.' && path[i + 2] == '/') {
                i += 3;
                if (!vemtra_Drop_Last_Dir(out))
                    return path;
                continue;
            }
        }
        out += path[i++];
    }
    if (!vemtra_Tidy_Last_Component(out))
        return path;
    simplified_path = out;
    return simplified_path.c_str();
}

char *VEMTRA_Get_Src_Root_Env(void)
{
    const char *value = getenv("TARSK_PROF_SRC_ROOT");
    if (value == nullptr)
        return nullptr;
    return VEMTRA_Strdup(vemtra_Simplify_Path(value));
}

const char *vemtra_Physical_Dir(const char *dir)
{
    if (last_dir_checked == dir) {
        physical_dir = last_dir_was_mapped ? last_dir_mapped : last_dir_checked;
        return physical_dir.c_str();
    }

    /* The directory's physical name is the one the run would find by
     * entering it and asking where it is. It is found without entering:
     * other threads (-j) open files by relative names meanwhile. */
    char mapped[PATH_MAX > VEMTRA_PATH_MAX ? PATH_MAX : VEMTRA_PATH_MAX];
    struct stat status;
    bool entered = stat(dir, &status) == 0 && S_ISDIR(status.st_mode) && access(dir, X_OK) == 0 &&
                   realpath(dir, mapped) != nullptr && strlen(mapped) < VEMTRA_PATH_MAX;

    last_dir_checked = dir;
    last_dir_was_mapped = entered ? 1 : 0;
    last_dir_mapped = entered ? mapped : "";
    physical_dir = entered ? last_dir_mapped : last_dir_checked;
    return physical_dir.c_str();
}

const char *vemtra_Physical_File_Name(const char *file_name)
{
    if (!physical_file_name_of.empty() && physical_file_name_of == file_name)
        return physical_file_name.c_str();
    const char *slash = strrchr(file_name, '/');
    const char *backslash = strrchr(file_name, '\\');
    const char *separator = (backslash != nullptr && (slash == nullptr || backslash > slash)) ? backslash : slash;

    std::string directory = separator != nullptr ? std::string(file_name, separator) : std::string();
    const char *name = separator != nullptr ? separator + 1 : file_name;
    std::string joined = std::string(vemtra_Physical_Dir(directory.c_str())) + "/" + name;
    physical_file_name = joined;
    physical_file_name_of = file_name;
    return physical_file_name.c_str();
}

void VEMTRA_Src_Root_Dir_Set(const char *path, int32_t expand)
{
    if (path == nullptr || path[0] == '\0') {
        VEMTRA_src_root_dir[0] = '\0';
        VEMTRA_src_root_dir_len = 0;
        return;
    }

    std::string root = vemtra_Simplify_Path(path);
    if (expand == 1 && VEMTRA_expand_symbolic_links == 1) {
        root = vemtra_Physical_Dir(root.c_str());
        if (root.size() + 1 > VEMTRA_PATH_MAX) {
            VEMTRA_Tool_Warning("new name for prof_src_root_dir, %s, is too long. Will not set src_root dir ",
                                root.c_str());
            return;
        }
    } else if (root.size() + 1 > VEMTRA_PATH_MAX) {
        VEMTRA_Tool_Warning("new name for prof_src_root_dir, %s, is too long. Will not set base dir ",
                            root.c_str());
        return;
    }

    /* A root that simplifies to nothing ("./") does not end in '/' either. */
    if (root.empty() || root.back() != '/')
        root += '/';
    memcpy(VEMTRA_src_root_dir, root.c_str(), root.size() + 1);
    VEMTRA_src_root_dir_len = static_cast<int32_t>(root.size());
}
