// report.js -- the modern view's behaviour; every page works without it.
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
