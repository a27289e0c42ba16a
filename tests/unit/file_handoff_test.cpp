// Pages handed off to the file thread (-j): every file comes out whole and
// in its own bytes, whether the thread wrote it or, when the thread was
// behind, the maker did; a page larger than the ring goes through it in
// parts, and a page writer's buffers go straight into the queue, in order
// with what went through the stream; an earlier file is written over and
// cut; a file that cannot be opened or written ends the run from the
// thread with the maker's message, and a run that ends early elsewhere
// first writes out what it handed off.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/file_handoff.h"
#include "report/page_writer.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/process_exit.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

// The text of page `n`: `size` bytes that differ from page to page and
// along the page, so that a piece written twice, lost or misplaced shows.
std::string PageText(int n, size_t size)
{
    std::string text;
    text.reserve(size);
    for (size_t at = 0; text.size() < size; ++at)
        text += std::to_string(n * 1000003 + static_cast<int>(at % 7919)) + (at % 13 == 0 ? "\n" : " ");
    text.resize(size);
    return text;
}

// Writes `text` as the pages do: a head through the stream's own buffer,
// then parts built in a page writer (whose buffers go straight into the
// queue) between parts written through the stream.
void WritePage(FILE *page, const std::string &text)
{
    size_t head = std::min(text.size(), size_t(100));
    fputs(text.substr(0, head).c_str(), page);
    size_t at = head;
    for (int part = 0; at < text.size(); ++part) {
        size_t piece = std::min(text.size() - at, size_t(part % 2 == 0 ? 700000 : 3000));
        if (part % 2 == 0) {
            PageWriter writer(page);
            for (size_t done = 0; done < piece; done += 50000)
                writer.put(text.data() + at + done, std::min(piece - done, size_t(50000)));
        } else {
            ASSERT_EQ(piece, fwrite(text.data() + at, 1, piece, page));
        }
        at += piece;
    }
}

// With the writing shared, some pages may be the maker's; without, every
// page goes through the thread.
TEST(FileHandoff, EveryPageComesOutWholeWhoeverWritesIt)
{
    const std::vector<size_t> sizes = {0, 1, 99, 4096, 70000, 300000, 900000, 5 << 20, 12, 600000};
    for (bool share : {true, false}) {
        ScratchDir dir;
        std::vector<std::string> texts;
        fileHandoffStart(share);
        int handed = 0;
        for (int n = 0; n < 60; ++n) {
            const std::string name = "page" + std::to_string(n) + ".html";
            texts.push_back(PageText(n, sizes[n % sizes.size()]));
            if (n % 3 == 0)  // an earlier, longer report's file
                dir.write(name, std::string(texts.back().size() + 5000, 'x'));
            const std::string path = dir.path(name);
            FILE *page = handedOffPage(path, name, {"Cannot open %s for output!\n", name});
            if (page != nullptr)
                ++handed;
            else
                page = checked_open_rewritable(path.c_str());
            ASSERT_NE(nullptr, page) << name;
            WritePage(page, texts.back());
            checked_close_rewritten(page, name.c_str());
        }
        fileHandoffFinish();
        for (int n = 0; n < 60; ++n)
            EXPECT_TRUE(dir.read("page" + std::to_string(n) + ".html") == texts[n]) << "page " << n << " differs";
        if (share)
            EXPECT_GT(handed, 0);
        else
            EXPECT_EQ(60, handed);
        // Once stopped, pages are the maker's again.
        EXPECT_EQ(nullptr, handedOffPage(dir.path("after.html"), "after.html", {"%s", "after.html"}));
    }
}

// With the writing shared, a maker writes its next page itself while three
// quarters of the ring wait. Here the thread is held: the first page's file
// is a FIFO that nobody reads yet, whose pipe takes 64 KiB and no more.
TEST(FileHandoff, AMakerWritesItsNextPageItselfWhileMostOfTheRingWaits)
{
    ScratchDir dir;
    const std::string fifo = dir.path("held");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0666));
    fileHandoffStart(true);
    FILE *held = handedOffPage(fifo, "held", {"%s", "held"});
    ASSERT_NE(nullptr, held);
    const std::string text = PageText(1, 480000);
    ASSERT_EQ(text.size(), fwrite(text.data(), 1, text.size(), held));
    ASSERT_EQ(0, fflush(held));
    EXPECT_EQ(nullptr, handedOffPage(dir.path("next.html"), "next.html", {"%s", "next.html"}));
    checked_close_rewritten(held, "held");

    // Let the thread go on: read what it writes into the FIFO.
    int reader = open(fifo.c_str(), O_RDONLY);
    ASSERT_GE(reader, 0);
    std::string got;
    char chunk[65536];
    ssize_t n;
    while (got.size() < text.size() && (n = read(reader, chunk, sizeof chunk)) > 0)
        got.append(chunk, static_cast<size_t>(n));
    fileHandoffFinish();
    close(reader);
    EXPECT_TRUE(got == text);
}

// A run that ends early from the maker's side still leaves every page it
// had closed whole, as a run without the thread would have. The pages are
// too few and small for the thread to have been woken for them yet.
TEST(FileHandoff, ARunThatEndsEarlyWritesOutWhatWasHandedOff)
{
    ScratchDir dir;
    const std::string text = PageText(3, 20000);
    Captured ended = CaptureInChild([&] {
        fileHandoffStart(true);
        for (int n = 0; n < 10; ++n) {
            const std::string name = "page" + std::to_string(n) + ".html";
            FILE *page = handedOffPage(dir.path(name), name, {"%s", name});
            ASSERT_NE(nullptr, page);
            WritePage(page, text);
            checked_close_rewritten(page, name.c_str());
        }
        vemtra_Process_Exit(1);
    });
    EXPECT_EQ(1, ended.status) << ended.err;
    for (int n = 0; n < 10; ++n)
        EXPECT_TRUE(dir.read("page" + std::to_string(n) + ".html") == text) << "page " << n << " differs";
}

// A page named relative to the run's directory lands there even when the
// thread opens it while the run has stepped into another directory (as it
// does for a moment to resolve a source's directory). The page is too
// small for the thread to be woken before the end.
TEST(FileHandoff, RelativeNamesAreTheRunsDirectorysAtTheStart)
{
    ScratchDir dir;
    ASSERT_EQ(0, mkdir(dir.path("elsewhere").c_str(), 0755));
    Captured ended = CaptureInChild([&] {
        if (chdir(dir.path("").c_str()) != 0)
            _exit(5);
        fileHandoffStart(true);
        FILE *page = handedOffPage("page.html", "page.html", {"%s", "page.html"});
        WritePage(page, "the page");
        checked_close_rewritten(page, "page.html");
        if (chdir("elsewhere") != 0)
            _exit(6);
        fileHandoffFinish();
    });
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("the page", dir.read("page.html"));
    EXPECT_FALSE(std::ifstream(dir.path("elsewhere/page.html")).good());
}

// Where the full name would be too long for the system but the relative
// one is not, the page is written by its relative name.
TEST(FileHandoff, ARelativeNameStaysWhenTheFullOneIsTooLong)
{
    ScratchDir dir;
    Captured ended = CaptureInChild([&] {
        const std::string step(200, 'd');
        if (chdir(dir.path("").c_str()) != 0)
            _exit(5);
        for (int depth = 0; depth < 16; ++depth)  // the run's directory: over 3,200 bytes
            if (mkdir(step.c_str(), 0755) != 0 || chdir(step.c_str()) != 0)
                _exit(6);
        std::string relative;
        for (int depth = 0; depth < 5; ++depth) {  // the page's: over 1,000 more
            relative += step + "/";
            if (mkdir(relative.c_str(), 0755) != 0)
                _exit(7);
        }
        relative += "page.html";
        fileHandoffStart(false);
        FILE *page = handedOffPage(relative, "page.html", {"Cannot open %s for output!\n", "page.html"});
        if (page == nullptr)
            _exit(8);
        WritePage(page, "the page");
        checked_close_rewritten(page, "page.html");
        fileHandoffFinish();
        std::ifstream written(relative);
        std::string text((std::istreambuf_iterator<char>(written)), std::istreambuf_iterator<char>());
        _exit(text == "the page" ? 0 : 9);
    });
    EXPECT_EQ(0, ended.status) << ended.err;
}

TEST(FileHandoff, AFileThatCannotBeOpenedOrWrittenEndsTheRunWithTheMakersMessage)
{
    ScratchDir dir;
    struct Case {
        std::string path;
        const char *expected;
    };
    const Case cases[] = {
        {dir.path("missing/page.html"), "Cannot open page.html for output!\n"},
        {"/dev/full", "ERROR: cannot write page.html: No space left on device\n"},
    };
    for (const Case &c : cases) {
        Captured ended = CaptureInChild([&] {
            fileHandoffStart(true);
            FILE *page = handedOffPage(c.path, "page.html", {"Cannot open %s for output!\n", "page.html"});
            if (page == nullptr)
                return;
            WritePage(page, PageText(1, 5000));
            checked_close_rewritten(page, "page.html");
            fileHandoffFinish();
        });
        EXPECT_EQ(1, ended.status) << c.path << ": " << ended.err;
        EXPECT_EQ(c.expected, ended.err) << c.path;
    }
}

}  // namespace
