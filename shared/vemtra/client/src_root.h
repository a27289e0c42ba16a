/* src_root.h -- the library's source root, path simplification and the
 * mapping of directories to their physical (link-free) paths.
 */
#ifndef VEMTRA_CLIENT_SRC_ROOT_H
#define VEMTRA_CLIENT_SRC_ROOT_H

#include <cstdint>

#define VEMTRA_PATH_MAX 4096

/* Room for a 4095-character root, its appended '/' and the terminator. */
extern char VEMTRA_src_root_dir[VEMTRA_PATH_MAX + 2]; /* empty, or ends with '/' */
extern int32_t VEMTRA_src_root_dir_len;
extern int32_t VEMTRA_expand_symbolic_links;      /* 1: map directories physically */
extern int32_t VEMTRA_ignore_src_dir_names;       /* nonzero: look up base names only */

/* The value of TARSK_PROF_SRC_ROOT, simplified when it holds a '.', or null
 * when the variable is not set. The text is a heap copy owned by the caller. */
char *VEMTRA_Get_Src_Root_Env(void);

/* Sets the source root (null or empty clears it). With `expand` and link
 * expansion on, the root is stored as its physical path. Over-long roots are
 * refused with a warning. */
void VEMTRA_Src_Root_Dir_Set(const char *path, int32_t expand);

/* Simplifies "./" and "dir/../" in `path` when it holds a '.'; returns `path`
 * itself when there is nothing to do or a give-up rule applies, else a
 * buffer shared by all callers until the next call. */
const char *vemtra_Simplify_Path(const char *path);

/* Maps a directory to its physical path: the working directory a chdir
 * into it would give (found without entering it, which would move every
 * thread), or `dir` itself when it cannot be entered. One-entry cache.
 * The result lives in a buffer shared until the next call. */
const char *vemtra_Physical_Dir(const char *dir);

/* Maps `file_name` to (physical directory of its directory part) + "/" +
 * (its last component), through the one-entry directory cache. The result
 * lives in a buffer shared until the next call. */
const char *vemtra_Physical_File_Name(const char *file_name);

#endif
