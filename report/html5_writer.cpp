/* html5_writer.cpp -- the modern view: the shared files first, a page per
 * module as the analysis hands it over, the index at the end. */
#include "report/html5_writer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "analysis/percent_format.h"
#include "report/html5_file_page.h"
#include "report/html5_page.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/process_exit.h"

namespace {

void makeDirectories(const std::string &path)
{
    for (size_t slash = path.find('/', 1); ; slash = path.find('/', slash + 1)) {
        std::string prefix = slash == std::string::npos ? path : path.substr(0, slash);
        if (!prefix.empty() && mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST) {
            fprintf(stderr, "ERROR: cannot write %s: %s\n", prefix.c_str(), strerror(errno));
            vemtra_Process_Exit(1);
        }
        if (slash == std::string::npos)
            break;
    }
}

/* Reads the file at `path` into `buffer`, which is kept from file to file
 * (grown, never shrunk, so it is seldom allocated and filled); its bytes,
 * or false when it cannot be read. */
bool readWhole(const char *path, std::vector<char> &buffer, std::string_view &bytes)
{
    FILE *file = VEMTRA_Open_Regular_File(path);
    if (file == nullptr)
        return false;
    /* Read straight into the buffer, with room for the file's size and a
     * byte more, so that its end is found by the same read; a file that
     * grows meanwhile is read on to its end. */
    int fd = fileno(file);
    struct stat status;
    size_t room = fstat(fd, &status) == 0 && status.st_size > 0 ? static_cast<size_t>(status.st_size) + 1 : 4096;
    if (buffer.size() < room)
        buffer.resize(room);
    size_t have = 0;
    bool ok = true;
    for (;;) {
        if (have == buffer.size())
            buffer.resize(2 * buffer.size());
        ssize_t got = read(fd, buffer.data() + have, buffer.size() - have);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            ok = got == 0;
            break;
        }
        have += static_cast<size_t>(got);
    }
    fclose(file);
    bytes = std::string_view(buffer.data(), have);
    return ok;
}

uint64_t fnv1a(const std::string &text)
{
    uint64_t hash = 0xcbf29ce484222325ull;
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 0x100000001b3ull;
    }
    return hash;
}

std::string parentOf(const std::string &shown)
{
    size_t slash = shown.rfind('/');
    return slash == std::string::npos ? std::string() : shown.substr(0, slash + 1);
}

/* Numbers of one directory group or of the run. */
struct Sums {
    uint64_t files = 0, functions = 0, functionsCovered = 0, blocks = 0, blocksCovered = 0;
};

void writeCell(Html5Page &page, uint64_t value, const char *cls = nullptr)
{
    page.raw(cls != nullptr ? "<td class=\"" : "<td");
    if (cls != nullptr) {
        page.raw(cls);
        page.raw("\"");
    }
    page.raw(" data-v=\"");
    page.number(value);
    page.raw("\">");
    page.number(value);
    page.raw("</td>");
}

/* A directory's total, covered and percentage cells for one figure. */
void writeGroupSums(Html5Page &page, uint64_t total, uint64_t covered)
{
    page.raw("<th class=\"wide\">");
    page.number(total);
    page.raw("</th><th class=\"wide\">");
    page.number(covered);
    page.raw("</th><th class=\"pct\">");
    page.percent(roundHalfUp2(coveragePercent(covered, total)));
    page.raw("%</th>");
}

void writePercentCell(Html5Page &page, double percent, const char *label)
{
    double rounded = roundHalfUp2(percent);
    page.raw("<td class=\"pct\" data-v=\"");
    page.percent(rounded);
    page.raw("\">");
    page.percent(rounded);
    page.raw("% <meter class=\"wide\" min=\"0\" max=\"100\" value=\"");
    page.percent(rounded);
    page.raw("\" aria-label=\"");
    page.text(label);
    page.raw("\"></meter></td>");
}

}  // namespace

std::string commonDirectory(const std::vector<std::string> &paths)
{
    if (paths.empty())
        return "";
    std::string common = parentOf(paths[0]);
    for (const std::string &path : paths) {
        size_t n = 0;
        while (n < common.size() && n < path.size() && common[n] == path[n])
            ++n;
        common.resize(n);
        size_t slash = common.rfind('/');
        common.resize(slash == std::string::npos ? 0 : slash + 1);
    }
    return common;
}

std::string html5PageName(const std::string &shown)
{
    std::string name;
    size_t start = 0;
    while (start <= shown.size()) {
        size_t slash = shown.find('/', start);
        std::string part = shown.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        std::string safe;
        for (char c : part) {
            bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                         c == '-' || c == '_';
            safe += plain ? c : '_';
        }
        if (safe.empty() || safe == "." || safe == "..")
            safe = "_";
        if (safe.size() > 200) {
            char hash[24];
            snprintf(hash, sizeof hash, "_%016llx", static_cast<unsigned long long>(fnv1a(part)));
            safe = safe.substr(0, 180) + hash;
        }
        if (!name.empty())
            name += '/';
        name += safe;
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    return name + ".html";
}

Html5Writer::Html5Writer(const char *dir, const std::vector<std::string> &modulePaths, const char *project,
                         bool reference, const Html5Colours &colours, int pageThreads)
    : dir_(dir), root_(commonDirectory(modulePaths)), project_(project), reference_(reference), colours_(colours)
{
    if (pageThreads > 0)
        jobs_ = std::make_unique<PageJobs>(pageThreads);
    while (dir_.size() > 1 && dir_.back() == '/')
        dir_.pop_back();
}

std::string Html5Writer::pagePathFor(const std::string &shown)
{
    std::string page = "files/" + html5PageName(shown);
    /* Two paths that sanitise alike get numbered pages. */
    std::string candidate = page;
    if (usedPages_.count(candidate) != 0) {
        int &n = nextNumber_.emplace(page, 2).first->second;
        do
            candidate = page.substr(0, page.size() - 5) + "-" + std::to_string(n++) + ".html";
        while (usedPages_.count(candidate) != 0);
    }
    usedPages_.insert(candidate);
    return candidate;
}

void Html5Writer::beginRun()
{
    makeDirectories(dir_ + "/files");
    Html5Page(dir_ + "/style.css").raw(html5Stylesheet(colours_));
    Html5Page(dir_ + "/report.js").raw(html5Script());
}

void Html5Writer::module(const ModuleReport &module, bool analysed)
{
    (void)analysed;
    std::string path = module.path != nullptr ? module.path : "";
    std::string shown = path.compare(0, root_.size(), root_) == 0 ? path.substr(root_.size()) : path;
    std::string page = pagePathFor(shown);
    rows_.push_back(FileRow{shown, page, module.functionsTotal, module.functionsCovered, module.blocksTotal,
                            module.blocksCovered, module.functionPercent, module.blockPercent});

    std::string toRoot;
    for (char c : page)
        if (c == '/')
            toRoot += "../";
    std::string target = dir_ + "/" + page;
    const char *project = project_;
    bool reference = reference_;
    /* The page's directory, made once for all the pages in it. */
    std::string pageDir = target.substr(0, target.rfind('/'));
    if (madeDirs_.insert(pageDir).second)
        makeDirectories(pageDir);
    /* The page needs the model, which the run replaces with the next
     * module's: a page written on another thread takes a copy. */
    auto write = [target, shown, toRoot, project, reference](const ModuleReport &model) {
        static thread_local std::vector<char> buffer;
        std::string_view source;
        bool read = readWhole(model.path != nullptr ? model.path : "", buffer, source);
        Html5FilePage input{&model, shown, toRoot, project, reference, read ? &source : nullptr};
        Html5Page out(target);
        writeHtml5FilePage(input, out);
    };
    if (jobs_ == nullptr) {
        write(module);
        return;
    }
    auto copy = std::make_shared<ModuleReport>(module);
    jobs_->submit([write, copy] { write(*copy); });
}

void Html5Writer::endRun(const RunReport &run)
{
    if (jobs_ != nullptr)
        jobs_->wait();
    Html5Labels labels = html5Labels(reference_);
    Html5Page page(dir_ + "/index.html");
    std::string title = project_ != nullptr ? std::string("Coverage of ") + project_ : std::string("Coverage");
    writeHtml5Head(page, title, "");
    page.raw("<body>\n<header>\n<h1>");
    page.text(title);
    page.raw("</h1>\n");
    writeHtml5ThemeButton(page);
    page.raw("</header>\n<main>\n");
    writeHtml5Totals(page, labels,
                     {{"Files", run.filesCovered, run.files, coveragePercent(run.filesCovered, run.files)},
                      {"Functions", run.functionsCovered, run.functions,
                       coveragePercent(run.functionsCovered, run.functions)},
                      {"Blocks", run.blocksCovered, run.blocks, coveragePercent(run.blocksCovered, run.blocks)}});
    page.raw("<section aria-labelledby=\"files\"><h2 id=\"files\">Files");
    if (!root_.empty()) {
        page.raw(" in ");
        page.text(root_);
    }
    page.raw("</h2>\n<p class=\"filter\"><label for=\"filter\">Filter files</label> "
             "<input id=\"filter\" type=\"search\" placeholder=\"Type / to filter\" autocomplete=\"off\"></p>\n"
             "<div class=\"table-wrap\"><table class=\"data sortable files\"><thead><tr>"
             "<th scope=\"col\"><button type=\"button\">File</button></th>");
    /* The counts give way on a narrow screen; the file and its two
     * percentages stay. */
    const char *columns[] = {"Functions", nullptr, "Function %", "Blocks", nullptr, "Block %"};
    for (const char *column : columns) {
        page.raw(column == nullptr || strchr(column, '%') == nullptr ? "<th scope=\"col\" class=\"wide\">"
                                                                      : "<th scope=\"col\">");
        page.raw("<button type=\"button\">");
        if (column == nullptr) {
            std::string label = labels.covered;
            label[0] = static_cast<char>(label[0] - 'a' + 'A');
            page.text(label);
        } else if (reference_ && strchr(column, '%') != nullptr) {
            page.raw(column[0] == 'F' ? "Function " : "Block ");
            page.text(labels.coverage);
            page.raw(" %");
        } else {
            page.raw(column);
        }
        page.raw("</button></th>");
    }
    page.raw("</tr></thead>\n");

    /* Directory groups in path order, each with its sums. */
    std::vector<size_t> order(rows_.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return rows_[a].shown < rows_[b].shown; });
    std::map<std::string, Sums> groups;
    for (const FileRow &row : rows_) {
        Sums &s = groups[parentOf(row.shown)];
        s.files++;
        s.functions += row.functions;
        s.functionsCovered += row.functionsCovered;
        s.blocks += row.blocks;
        s.blocksCovered += row.blocksCovered;
    }
    std::string group;
    bool open = false;
    for (size_t index : order) {
        const FileRow &row = rows_[index];
        std::string parent = parentOf(row.shown);
        if (!open || parent != group) {
            if (open)
                page.raw("</tbody>\n");
            group = parent;
            open = true;
            const Sums &s = groups[group];
            page.raw("<tbody><tr class=\"dir\"><th scope=\"rowgroup\">");
            page.text(group.empty() ? std::string("./") : group);
            page.raw("</th>");
            writeGroupSums(page, s.functions, s.functionsCovered);
            writeGroupSums(page, s.blocks, s.blocksCovered);
            page.raw("</tr>\n");
        }
        page.raw("<tr class=\"row\" data-p=\"");
        page.text(row.shown);
        page.raw("\"><td><a href=\"");
        page.raw(row.page);
        page.raw("\">");
        page.text(row.shown.substr(parent.size()));
        page.raw("</a></td>");
        writeCell(page, row.functions, "wide");
        writeCell(page, row.functionsCovered, "wide");
        writePercentCell(page, row.functionPercent, "Function coverage");
        writeCell(page, row.blocks, "wide");
        writeCell(page, row.blocksCovered, "wide");
        writePercentCell(page, row.blockPercent, "Block coverage");
        page.raw("</tr>\n");
    }
    if (open)
        page.raw("</tbody>\n");
    page.raw("</table></div></section>\n</main>\n<footer><p>Keys: <kbd>/</kbd> filter, <kbd>t</kbd> theme. "
             "Made by vemcov.</p></footer>\n</body>\n</html>\n");
}
