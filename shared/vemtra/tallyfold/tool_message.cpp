/* tool_message.cpp -- the library's message lines on standard error. */
#include "shared/vemtra/tallyfold/tool_message.h"

#include <cstdarg>
#include <cstdio>

#include "shared/vemtra/tallyfold/process_exit.h"

static const char *tool_name = nullptr;

void VEMTRA_Tool_Set_Name(const char *name)
{
    tool_name = name;
}

/* Writes the prefix, the caller's text and the closing newline; returns the
 * result of the last write. */
static int vemtra_Write_Line(const char *kind, const char *format, va_list args)
{
    if (tool_name != nullptr)
        fprintf(stderr, "%s: ", tool_name);
    fputs(kind, stderr);
    vfprintf(stderr, format, args);
    return fprintf(stderr, "\n");
}

int VEMTRA_Tool_Message(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int result = vemtra_Write_Line("", format, args);
    va_end(args);
    return result;
}

void VEMTRA_Tool_Warning(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    vemtra_Write_Line("WARNING: ", format, args);
    va_end(args);
}

void VEMTRA_Tool_Error(uint32_t status, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    vemtra_Write_Line("ERROR: ", format, args);
    va_end(args);
    vemtra_Process_Exit(static_cast<int>(status));
}
