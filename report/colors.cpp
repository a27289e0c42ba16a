/* colors.cpp -- the colour table and the one colour change of a listing. */
#include "report/colors.h"

#include <cstring>

#include "driver/console.h"
#include "report/html_escape.h"
#include "report/page_writer.h"

const char *BGColor[8] = {
    nullptr,
    "#90ee90", /* COLOR_INFEASIBLE */
    "#ffffff", /* COLOR_UNKNOWN */
    "#ffffff", /* COLOR_COVERED */
    "#fafad2", /* COLOR_PARTIAL */
    "#ffff99", /* COLOR_UNCOVERED_BLOCK */
    "#ffcccc", /* COLOR_UNCOVERED_FUNCTION */
    "#ffffff", /* COLOR_INFO */
};

static void checkColor(int color)
{
    if (color < COLOR_INFEASIBLE || color > COLOR_INFO) {
        fprintf(stdout, "ERROR: unknown color %d\n", color);
        tvx_Exit(1);
    }
}

void SetBGColor(int color, const char *colour)
{
    checkColor(color);
    /* The table is written into style attributes as it stands, so it holds
     * the colour escaped once, here; it lives as long as the run. */
    HtmlValue safe(colour);
    if (colour == nullptr || safe.c_str() == colour) {
        BGColor[color] = colour;
        return;
    }
    char *copy = strdup(safe.c_str());
    if (copy == nullptr)
        vemcov_Out_Of_Memory();
    BGColor[color] = copy;
}

void SetNoPartialColor()
{
    BGColor[COLOR_PARTIAL] = BGColor[COLOR_COVERED];
}

const char *takeBGColor(int color)
{
    return BGColor[color];
}

void changeColor(PageWriter &page, int newColor, int oldColor)
{
    checkColor(newColor);
    checkColor(oldColor);
    page.put("</a><a style=\"background-color: ");
    page.put(BGColor[newColor]);
    page.put("\">");
}

void changeColor(FILE *stream, int newColor, int oldColor)
{
    checkColor(newColor);
    checkColor(oldColor);
    fprintf(stream, "</a><a style=\"background-color: %s\">", BGColor[newColor]);
}
