/* tool_message.h -- the profile library's error, warning and message lines.
 *
 * All three routines write to standard error: the tool name and ": " when a
 * name is set, then "ERROR: " or "WARNING: " (nothing for a plain message),
 * the formatted text and one "\n". A format that already ends in a newline
 * therefore produces an empty line after the message; that is intended.
 */
#ifndef VEMTRA_TALLYFOLD_TOOL_MESSAGE_H
#define VEMTRA_TALLYFOLD_TOOL_MESSAGE_H

#include <cstdint>

/* Stores `name` (not a copy: the caller keeps it alive) as the prefix of
 * every later message. */
void VEMTRA_Tool_Set_Name(const char *name);

/* Prints an informational line. Returns the result of the final write. */
int VEMTRA_Tool_Message(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* Prints a warning line and returns. */
void VEMTRA_Tool_Warning(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* Prints an error line and ends the process with `status`. */
[[noreturn]] void VEMTRA_Tool_Error(uint32_t status, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

#endif
