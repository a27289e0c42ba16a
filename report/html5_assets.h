/* html5_assets.h -- the stylesheet and the script that every page of the
 * modern view shares (-html5). No page carries inline script or style, so
 * the view works from file:// and behind a strict Content-Security-Policy.
 */
#ifndef VEMCOV_REPORT_HTML5_ASSETS_H
#define VEMCOV_REPORT_HTML5_ASSETS_H

#include <string>

/* Colours the options set for the seven classes, indexed like Color (slot 0
 * unused): a class whose colour is null keeps the view's own in the light
 * theme. */
struct Html5Colours {
    const char *byClass[8] = {};
};

/* style.css: light and dark themes (the system's preference unless the
 * reader chose one), the colour classes, the layout down to a 390-pixel
 * screen. A colour that is not a plain CSS colour value is left out. */
std::string html5Stylesheet(const Html5Colours &colours);

/* report.js: the theme toggle, the keys (n, p, /, t), sortable tables and
 * the index's filter. */
const char *html5Script();

#endif
