/* page_foot.cpp -- the foot shared by the listing and the file tables. */
#include "report/page_foot.h"

#include "report/html_escape.h"
#include "report/maker_credit.h"

static const char FOOT_TABLE_START[] = "<table border=0 cellpadding=3 cellspacing=0 ";
static const char FOOT_TABLE_STYLE[] =
    "style=\"color:black;font-weight:normal;font-family:Verdana,Arial;";
static const char FOOT_TABLE_FONT[] = "font-size:xx-small\">\n";

void writePageFoot(FILE *page, const char *ownerAddress, const char *ownerName)
{
    fprintf(page, "<hr size=%d noshade>\n", 1);
    fputs(FOOT_TABLE_START, page);
    fprintf(page, "width=\"%d%%\" ", 100);
    fputs(FOOT_TABLE_STYLE, page);
    fputs(FOOT_TABLE_FONT, page);

    fprintf(page, "<td width=\"%d%%\">\n", 50);
    writeMakerLogo(page);
    writeGeneratedBy(page);
    fputs("</td>\n", page);

    /* The owner line's first anchor is never closed; browsers accept it. */
    fputs("<td>\n", page);
    fputs("<table border=0 cellpadding=3 cellspacing=0 width=\"50%\">\n", page);
    fprintf(page, "<tr><a>Web-Page Owner: <a href=\"mailto:%s\">%s</a></tr>\n", HtmlValue(ownerAddress).c_str(),
            HtmlValue(ownerName).c_str());
    fputs("</table>\n", page);
    fputs("</td>\n", page);
    fputs("</table>\n", page);

    fputs("</body>\n", page);
    fputs("</html>\n", page);
}
