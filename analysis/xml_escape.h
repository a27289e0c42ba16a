/* xml_escape.h -- the one escape routine of the XML coverage files. */
#ifndef VEMCOV_ANALYSIS_XML_ESCAPE_H
#define VEMCOV_ANALYSIS_XML_ESCAPE_H

#include <cstdio>

/* Writes `text` to `out` with '"', '&', '\'', '<' and '>' replaced by
 * "&quot;", "&amp;", "&apos;", "&lt;" and "&gt;". Every other byte is
 * written as it is; an empty or null text writes nothing. */
void escapeXML(FILE *out, const char *text);

#endif
