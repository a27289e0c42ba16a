/* html5_assets.cpp -- the modern view's stylesheet and script. */
#include "report/html5_assets.h"

#include <cstring>

#include "report/colors.h"

namespace {

/* Light and dark palettes; text on every class colour keeps a contrast of
 * at least 4.5:1 (the darkest text on the lightest fill and the reverse). */
const char STYLE_BASE[] = R"css(:root {
  color-scheme: light;
  --bg: #ffffff; --fg: #1f2328; --muted: #57606a; --link: #0550ae; --line: #d0d7de; --head: #f6f8fa;
  --k1: #e4e7eb; --k3: #d3f5dc; --k4: #fff0b3; --k5: #ffd6d1; --k6: #ffb8c0; --hl: #b6d7ff;
}
:root[data-theme="dark"] {
  color-scheme: dark;
  --bg: #0d1117; --fg: #e6edf3; --muted: #9ba6b2; --link: #79b8ff; --line: #30363d; --head: #161b22;
  --k1: #2b3038; --k3: #113a20; --k4: #3d3210; --k5: #4f1f1c; --k6: #67192a; --hl: #1f3b63;
}
@media (prefers-color-scheme: dark) {
  :root:not([data-theme="light"]) {
    color-scheme: dark;
    --bg: #0d1117; --fg: #e6edf3; --muted: #9ba6b2; --link: #79b8ff; --line: #30363d; --head: #161b22;
    --k1: #2b3038; --k3: #113a20; --k4: #3d3210; --k5: #4f1f1c; --k6: #67192a; --hl: #1f3b63;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--bg); color: var(--fg);
  font: 15px/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", Arial, sans-serif; }
a { color: var(--link); }
header, main, footer { padding: 0.6rem 1rem; max-width: 100%; }
header { border-bottom: 1px solid var(--line); display: flex; flex-wrap: wrap; gap: 0.5rem 1rem; align-items: center; }
header h1 { font-size: 1.25rem; margin: 0; overflow-wrap: anywhere; flex: 1 1 16rem; }
nav { font-size: 0.9rem; overflow-wrap: anywhere; width: 100%; }
footer { color: var(--muted); font-size: 0.85rem; }
button { font: inherit; color: var(--fg); background: var(--head); border: 1px solid var(--line); border-radius: 6px; padding: 0.2rem 0.6rem; cursor: pointer; }
h2 { font-size: 1.05rem; margin: 1rem 0 0.4rem; }
.totals { display: flex; flex-wrap: wrap; gap: 0.5rem 1.5rem; margin: 0.4rem 0; padding: 0; list-style: none; }
.totals li { min-width: 12rem; }
.totals strong { font-size: 1.1rem; }
meter { width: 8rem; height: 0.8rem; vertical-align: middle; }
.filter { margin: 0.5rem 0; }
.filter input { font: inherit; color: var(--fg); background: var(--bg); border: 1px solid var(--line); border-radius: 6px; padding: 0.25rem 0.5rem; width: min(24rem, 100%); }
.table-wrap { overflow-x: auto; max-width: 100%; }
table.data { border-collapse: collapse; width: 100%; font-size: 0.92rem; }
table.data th, table.data td { border-bottom: 1px solid var(--line); padding: 0.25rem 0.5rem; text-align: right; white-space: nowrap; }
table.data th:first-child, table.data td:first-child { text-align: left; white-space: normal; overflow-wrap: anywhere; }
table.data thead th { background: var(--head); position: sticky; top: 0; }
table.data th button { background: none; border: 0; padding: 0; font-weight: 600; color: var(--fg); }
table.data tr.dir th { background: var(--head); text-align: right; font-weight: 600; }
table.data tr.dir th:first-child { text-align: left; }
.pct { font-variant-numeric: tabular-nums; }
.legend { display: flex; flex-wrap: wrap; gap: 0.3rem 0.8rem; font-size: 0.85rem; margin: 0.4rem 0; padding: 0; list-style: none; }
.legend li span { padding: 0 0.35rem; border-radius: 3px; }
.code { overflow-x: auto; border: 1px solid var(--line); border-radius: 6px; max-width: 100%; }
table.src { border-collapse: collapse; font: 13px/1.4 ui-monospace, SFMono-Regular, Menlo, Consolas, "Liberation Mono", monospace; tab-size: 8; -moz-tab-size: 8; }
table.src td { padding: 0 0.4rem; vertical-align: top; white-space: pre; }
table.src td:nth-child(1) { text-align: right; color: var(--muted); user-select: none; border-right: 1px solid var(--line); }
table.src td:nth-child(1) a { color: var(--muted); text-decoration: none; }
table.src td:nth-child(2) { text-align: center; width: 1.6rem; user-select: none; }
table.src td:nth-child(3) { text-align: right; color: var(--muted); user-select: none; border-right: 1px solid var(--line); }
table.src td:nth-child(4) { width: 100%; }
table.src tr.x td:nth-child(4) { background: var(--k1); }
table.src tr:target td, table.src tr.hl td { background: var(--hl); }
.k1 { background: var(--k1); } .k3 { background: var(--k3); } .k4 { background: var(--k4); }
.k5 { background: var(--k5); } .k6 { background: var(--k6); }
.keys { color: var(--muted); font-size: 0.85rem; }
@media (max-width: 40rem) {
  body { font-size: 14px; }
  header, main, footer { padding: 0.5rem; }
  table.data .wide { display: none; }
  table.data th:first-child, table.data td:first-child { min-width: 9rem; }
  meter { width: 4rem; }
}
)css";

/* A colour an option set, when it is a plain CSS colour value: letters,
 * digits, '#', '(', ')', ',', '.', '%' and spaces only. */
bool plainColour(const char *colour)
{
    if (colour == nullptr || colour[0] == '\0' || strlen(colour) > 64)
        return false;
    for (const char *c = colour; *c != '\0'; ++c) {
        if (!((*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9') ||
              strchr("#(),.% ", *c) != nullptr))
            return false;
    }
    return true;
}

const char SCRIPT[] = R"js(// report.js -- the modern view's behaviour; every page works without it.
(function () {
  'use strict';
  var root = document.documentElement;
  var KEY = 'vemcov-theme';
  function stored() { try { return localStorage.getItem(KEY); } catch (e) { return null; } }
  function store(v) { try { localStorage.setItem(KEY, v); } catch (e) { } }
  var chosen = stored();
  if (chosen === 'light' || chosen === 'dark') root.setAttribute('data-theme', chosen);
  function currentTheme() {
    var t = root.getAttribute('data-theme');
    if (t) return t;
    return window.matchMedia && window.matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light';
  }
  function toggleTheme() {
    var next = currentTheme() === 'dark' ? 'light' : 'dark';
    root.setAttribute('data-theme', next);
    store(next);
    var b = document.getElementById('theme');
    if (b) b.setAttribute('aria-pressed', next === 'dark' ? 'true' : 'false');
  }

  function cellValue(row, column) {
    var cell = row.children[column];
    if (!cell) return '';
    var v = cell.getAttribute('data-v');
    return v !== null ? parseFloat(v) : cell.textContent.toLowerCase();
  }
  function sortTable(table, column, button) {
    var ascending = button.getAttribute('data-dir') !== 'asc';
    var headers = table.querySelectorAll('thead th');
    for (var h = 0; h < headers.length; h++) headers[h].removeAttribute('aria-sort');
    button.parentNode.setAttribute('aria-sort', ascending ? 'ascending' : 'descending');
    button.setAttribute('data-dir', ascending ? 'asc' : 'desc');
    var bodies = table.tBodies;
    for (var b = 0; b < bodies.length; b++) {
      var rows = Array.prototype.slice.call(bodies[b].querySelectorAll('tr.row'));
      rows.sort(function (x, y) {
        var a = cellValue(x, column), c = cellValue(y, column);
        if (a < c) return ascending ? -1 : 1;
        if (a > c) return ascending ? 1 : -1;
        return 0;
      });
      for (var r = 0; r < rows.length; r++) bodies[b].appendChild(rows[r]);
    }
  }
  function setUpSorting() {
    var buttons = document.querySelectorAll('table.sortable thead th button');
    for (var i = 0; i < buttons.length; i++) {
      (function (button) {
        var th = button.parentNode;
        var column = Array.prototype.indexOf.call(th.parentNode.children, th);
        var table = th.closest('table');
        button.addEventListener('click', function () { sortTable(table, column, button); });
      })(buttons[i]);
    }
  }

  function setUpFilter() {
    var input = document.getElementById('filter');
    if (!input) return;
    input.addEventListener('input', function () {
      var text = input.value.toLowerCase();
      var bodies = document.querySelectorAll('table.files tbody');
      for (var b = 0; b < bodies.length; b++) {
        var rows = bodies[b].querySelectorAll('tr.row');
        var shown = 0;
        for (var r = 0; r < rows.length; r++) {
          var match = rows[r].getAttribute('data-p').toLowerCase().indexOf(text) >= 0;
          rows[r].hidden = !match;
          if (match) shown++;
        }
        bodies[b].hidden = shown === 0;
      }
    });
  }

  var uncovered = null, at = -1;
  function move(step) {
    if (uncovered === null) uncovered = document.querySelectorAll('table.src tr.u');
    if (uncovered.length === 0) return;
    if (at >= 0 && at < uncovered.length) uncovered[at].classList.remove('hl');
    at = (at + step + uncovered.length) % uncovered.length;
    var row = uncovered[at];
    row.classList.add('hl');
    row.scrollIntoView({ block: 'center' });
    if (history.replaceState) history.replaceState(null, '', '#' + row.id);
  }
  function typing(target) {
    var tag = target && target.tagName;
    return tag === 'INPUT' || tag === 'TEXTAREA' || tag === 'SELECT' || (target && target.isContentEditable);
  }
  document.addEventListener('keydown', function (event) {
    if (event.ctrlKey || event.metaKey || event.altKey || typing(event.target)) return;
    if (event.key === 'n') { move(1); event.preventDefault(); }
    else if (event.key === 'p') { move(-1); event.preventDefault(); }
    else if (event.key === 't') { toggleTheme(); event.preventDefault(); }
    else if (event.key === '/') {
      var input = document.getElementById('filter');
      if (input) { input.focus(); event.preventDefault(); }
    }
  });

  document.addEventListener('DOMContentLoaded', function () {
    var b = document.getElementById('theme');
    if (b) {
      b.hidden = false;
      b.setAttribute('aria-pressed', currentTheme() === 'dark' ? 'true' : 'false');
      b.addEventListener('click', toggleTheme);
    }
    setUpSorting();
    setUpFilter();
  });
})();
)js";

}  // namespace

std::string html5Stylesheet(const Html5Colours &colours)
{
    std::string css = STYLE_BASE;
    /* Colours the options chose, in the light theme only. */
    std::string chosen;
    for (int c = 1; c < 8; ++c) {
        if (!plainColour(colours.byClass[c]) || (c != COLOR_INFEASIBLE && c != COLOR_COVERED && c != COLOR_PARTIAL &&
                                                  c != COLOR_UNCOVERED_BLOCK && c != COLOR_UNCOVERED_FUNCTION))
            continue;
        chosen += " --k" + std::to_string(c) + ": " + colours.byClass[c] + ";";
    }
    if (!chosen.empty())
        css += ":root:not([data-theme=\"dark\"]) {" + chosen + " }\n@media (prefers-color-scheme: dark) { :root:not([data-theme=\"light\"]) { --k1: #2b3038; --k3: #113a20; --k4: #3d3210; --k5: #4f1f1c; --k6: #67192a; } }\n";
    return css;
}

const char *html5Script()
{
    return SCRIPT;
}
