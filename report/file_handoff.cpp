/* file_handoff.cpp -- the hand-off thread and the streams that feed it. */
#include "report/file_handoff.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <system_error>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/exit_threads.h"
#include "shared/vemtra/tallyfold/process_exit.h"

namespace {

/* A page's file, from the opening of its stream to the closing of the file. */
struct HandedFile {
    std::string path;
    std::string name;
    OpenFailure failure;
    FILE *file = nullptr;
    int writeError = 0; /* errno of the first failed write */
    bool console = false; /* the run's standard output or error */
    bool page = false;    /* a page's file, opened here and unbuffered */
    FILE *stream = nullptr; /* the run's stream of a handed stream */
};

/* One step of one file's writing, in the order the page's maker took it;
 * a write's bytes lie in the ring. */
struct Piece {
    enum Kind { OPEN, WRITE, CLOSE } kind;
    HandedFile *file;
    size_t at = 0;
    size_t length = 0;
};

/* The pages' bytes wait in a ring, written at its head and taken from its
 * tail in the order they came: memory touched once and used over and over.
 * Memory allocated for each piece and freed on the other thread goes back
 * to the system and is faulted in again, 4 KiB at a time, and a fault here
 * costs more than writing the 4 KiB to a file. Handing the page buffers
 * over whole instead, without the copy, cost more still: the run then
 * wrote each page into a buffer the other processor had just read, and its
 * user time grew by a fifth (0.425 against 0.525 s, medians of ten
 * alternated runs into tmpfs). A small ring stays in the processors'
 * caches. */
const size_t RING_SIZE = size_t(512) << 10;

/* The thread is woken when this much waits for it, not at every piece: a
 * wake-up is a system call on one processor and an interrupt on the other,
 * and the large report has about 100,000 pieces. At most the ring's size,
 * so that a full ring wakes it. */
const size_t WAKE_BYTES = RING_SIZE / 2;
const size_t WAKE_PIECES = 64;

/* The most pieces of one page written by one system call: the pieces of a
 * page that wait one after the other (its stream's buffer cuts a small
 * page in two, a large one ends with its foot) go out together. */
const int GATHERED_MOST = 16;

/* The makers write the next page themselves (when they share the
 * writing) while this much still waits: three quarters of the ring, where
 * a listing page of the usual size would make its maker wait for room.
 * At half the ring the makers, whose own work is the larger part, took
 * over too often (six alternated runs of -j 2: 0.82 s at half, 0.62 s at
 * three quarters, the default 0.70 s). */
const size_t SHARE_BYTES = RING_SIZE / 4 * 3;

std::mutex lock;
std::condition_variable workWaits; /* the thread waits here for work */
std::condition_variable roomMade;  /* the makers wait here for room, the end for the last piece */
std::deque<Piece> pieces;
std::unique_ptr<char[]> ring;
uint64_t ringHead = 0; /* bytes put in the ring so far */
uint64_t ringTail = 0; /* bytes written out of it so far */
bool sleeping = false; /* the thread waits for work */
int makersWaiting = 0; /* threads waiting for room in the ring */
/* Whether a maker waits for room (set with the lock held, read without):
 * the thread then gives back what it wrote after each step, not only
 * after its batch. */
std::atomic<bool> roomWanted{false};
bool writing = false;  /* the thread is at a piece taken from the queue */
bool draining = false; /* a thread waits for every piece queued to be written */
bool stopping = false;
bool active = false;
std::thread thread;

/* Bytes queued and not yet written (lock held). */
uint64_t bytesWaiting()
{
    return ringHead - ringTail;
}

/* Whether the sleeping thread has enough to do to be woken (lock held). */
bool worthWaking()
{
    return draining || stopping || pieces.size() >= WAKE_PIECES || bytesWaiting() >= WAKE_BYTES;
}

/* Queues `piece` (lock held), waking the thread when it is worth it. */
void push(const Piece &piece)
{
    pieces.push_back(piece);
    if (sleeping && worthWaking())
        workWaits.notify_one();
}

void queue(const Piece &piece)
{
    std::lock_guard<std::mutex> hold(lock);
    push(piece);
}

/* Copies `length` bytes into the ring, in pieces that fit the room left
 * and do not pass its end, each queued as soon as it is there. */
void queueBytes(HandedFile *file, const char *bytes, size_t length)
{
    std::unique_lock<std::mutex> hold(lock);
    while (length > 0) {
        if (ringHead - ringTail == RING_SIZE) {
            ++makersWaiting;
            roomWanted.store(true, std::memory_order_relaxed);
            roomMade.wait(hold, [] { return ringHead - ringTail < RING_SIZE; });
            --makersWaiting;
        }
        size_t at = static_cast<size_t>(ringHead % RING_SIZE);
        size_t room = RING_SIZE - static_cast<size_t>(ringHead - ringTail);
        size_t part = std::min({length, room, RING_SIZE - at});
        memcpy(ring.get() + at, bytes, part);
        ringHead += part;
        push(Piece{Piece::WRITE, file, at, part});
        bytes += part;
        length -= part;
    }
}

void openFile(HandedFile *file)
{
    file->file = checked_open_rewritable(file->path.c_str());
    if (file->file == nullptr) {
        int error = errno;
        fprintf(stderr, file->failure.format, file->failure.argument.c_str(), strerror(error));
        vemtra_Process_Exit(1);
    }
    /* Each piece is large and goes to the file in one write. */
    setvbuf(file->file, nullptr, _IONBF, 0);
    file->page = true;
}

void writeFile(HandedFile *file, const char *bytes, size_t length)
{
    if (fwrite(bytes, 1, length, file->file) != length && file->writeError == 0)
        file->writeError = errno != 0 ? errno : EIO;
    if (file->console)
        fflush(file->file);
}

/* Records of files closed, used again for later pages: a record freed on
 * this thread after the maker's thread allocated it costs each thread's
 * allocator more than keeping it (lock held). Never destroyed, like the
 * map of the pages' streams below: a thread may still reach them while
 * the run exits, and the records stay reachable for the leak checker. */
std::vector<HandedFile *> &spareFiles = *new std::vector<HandedFile *>;

/* The bytes of a write piece. */
const char *bytesOf(const Piece &piece)
{
    return ring.get() + piece.at;
}

/* Writes the `count` pieces of one page's file in one system call where
 * the file takes them all; what it does not take goes through the stream,
 * which then fails alike and keeps the failure for the close. */
void writePieces(const Piece *taken, int count)
{
    HandedFile *file = taken[0].file;
    if (count == 1 || !file->page) {
        for (int i = 0; i < count; ++i)
            writeFile(file, bytesOf(taken[i]), taken[i].length);
        return;
    }
    struct iovec parts[GATHERED_MOST];
    for (int i = 0; i < count; ++i) {
        parts[i].iov_base = const_cast<char *>(bytesOf(taken[i]));
        parts[i].iov_len = taken[i].length;
    }
    int fd = fileno(file->file);
    struct iovec *left = parts;
    int leftCount = count;
    while (leftCount > 0) {
        ssize_t written = writev(fd, left, leftCount);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        size_t done = static_cast<size_t>(written);
        while (leftCount > 0 && done >= left->iov_len) {
            done -= left->iov_len;
            ++left;
            --leftCount;
        }
        if (leftCount > 0) {
            left->iov_base = static_cast<char *>(left->iov_base) + done;
            left->iov_len -= done;
        }
    }
    for (int i = 0; i < leftCount; ++i)
        writeFile(file, static_cast<const char *>(left[i].iov_base), left[i].iov_len);
}

void closeFile(HandedFile *file)
{
    /* The close reports a failed write by the errno it finds. */
    errno = file->writeError;
    checked_close_rewritten(file->file, file->name.c_str());
}

/* What the thread has written and not yet given back to the makers: ring
 * bytes and the records of closed files. */
struct Written {
    uint64_t ringBytes = 0;
    std::vector<HandedFile *> closed;
};

/* Gives back what was written (lock held), waking the makers that wait
 * for the room it makes. */
void giveBack(Written &written)
{
    ringTail += written.ringBytes;
    spareFiles.insert(spareFiles.end(), written.closed.begin(), written.closed.end());
    written.ringBytes = 0;
    written.closed.clear();
    /* The makers go on once half the ring is free again. */
    if (makersWaiting > 0 && ringHead - ringTail <= RING_SIZE / 2)
        roomMade.notify_all();
    roomWanted.store(makersWaiting > 0, std::memory_order_relaxed);
}

/* Takes the pieces of one step from the front of `batch`: one piece, or
 * the writes of one page that wait one after the other. Returns how many. */
int takeStep(std::deque<Piece> &batch, Piece *taken)
{
    int count = 0;
    taken[count++] = batch.front();
    batch.pop_front();
    if (taken[0].kind == Piece::WRITE && taken[0].file->page) {
        while (count < GATHERED_MOST && !batch.empty() && batch.front().kind == Piece::WRITE &&
               batch.front().file == taken[0].file) {
            taken[count++] = batch.front();
            batch.pop_front();
        }
    }
    return count;
}

void work()
{
    std::unique_lock<std::mutex> hold(lock);
    std::deque<Piece> batch;
    Written written;
    for (;;) {
        if (pieces.empty()) {
            if (draining)
                roomMade.notify_all();
            sleeping = true;
            workWaits.wait(hold, [] { return stopping || (!pieces.empty() && worthWaking()); });
            sleeping = false;
            if (pieces.empty())
                return;
        }
        /* Everything queued is taken at once, and what is written given
         * back once the batch is done (or at once when a maker waits for
         * room): the lock, which the makers take for every piece, passes
         * between the processors twice per batch, not per piece. */
        batch.swap(pieces);
        writing = true;
        hold.unlock();
        while (!batch.empty()) {
            Piece taken[GATHERED_MOST];
            int count = takeStep(batch, taken);
            const Piece &piece = taken[0];
            switch (piece.kind) {
            case Piece::OPEN:
                openFile(piece.file);
                break;
            case Piece::WRITE:
                writePieces(taken, count);
                for (int i = 0; i < count; ++i)
                    written.ringBytes += taken[i].length;
                break;
            case Piece::CLOSE:
                closeFile(piece.file);
                written.closed.push_back(piece.file);
                break;
            }
            if (roomWanted.load(std::memory_order_relaxed)) {
                hold.lock();
                giveBack(written);
                hold.unlock();
            }
        }
        hold.lock();
        writing = false;
        giveBack(written);
    }
}

ssize_t streamWrite(void *cookie, const char *bytes, size_t length)
{
    /* The exit's flush of every stream may come here from the hand-off
     * thread itself, which would wait for room only it can make: what a
     * run that ends so still had to write is dropped. */
    if (std::this_thread::get_id() != thread.get_id())
        queueBytes(static_cast<HandedFile *>(cookie), bytes, length);
    return static_cast<ssize_t>(length);
}

/* The page the calling thread is making, for handing its page buffer
 * over: a maker writes and closes each page before it opens the next, so
 * a thread has one at a time, found without the lock or a search. */
struct CurrentPage {
    FILE *stream = nullptr;
    HandedFile *file = nullptr;
};
thread_local CurrentPage currentPage;

int streamClose(void *cookie)
{
    HandedFile *file = static_cast<HandedFile *>(cookie);
    if (currentPage.file == file)
        currentPage = CurrentPage();
    queue(Piece{Piece::CLOSE, file});
    return 0;
}

/* A record used before, when there is one (lock held). */
HandedFile *takeSpareFile()
{
    if (spareFiles.empty())
        return nullptr;
    HandedFile *file = spareFiles.back();
    spareFiles.pop_back();
    return file;
}

/* A record for a new file: `spare` (from takeSpareFile) when not null. */
HandedFile *newHandedFile(HandedFile *spare, std::string path, const std::string &name, OpenFailure failure)
{
    HandedFile *file = spare;
    if (file == nullptr)
        return new HandedFile{std::move(path), name, std::move(failure)};
    /* The strings keep their room: assigning rarely allocates. */
    file->path.assign(path);
    file->name.assign(name);
    file->failure.format = failure.format;
    file->failure.argument.assign(failure.argument);
    file->file = nullptr;
    file->writeError = 0;
    file->console = false;
    file->page = false;
    file->stream = nullptr;
    return file;
}

/* The run's other outputs while pages are handed off (its standard output
 * and error, the full block files): what the run writes to them goes
 * through the queue, so it comes out after the pages made before it, as
 * when the run writes every file itself. A page that fails on the thread
 * ends the run before anything written later. */
struct Diverted {
    FILE **place;         /* where the run finds the stream */
    FILE *real;           /* the stream the bytes go to */
    HandedFile target;    /* the real stream, as the thread writes to it */
};
const size_t DIVERTED_MOST = 4;
Diverted diverted[DIVERTED_MOST];
size_t divertedCount = 0;

ssize_t divertedWrite(void *cookie, const char *bytes, size_t length)
{
    HandedFile *target = static_cast<HandedFile *>(cookie);
    if (std::this_thread::get_id() != thread.get_id())
        queueBytes(target, bytes, length);
    else if (target->console)
        writeFile(target, bytes, length); /* the thread's own message */
    /* Else the exit's flush, after a page failed on the thread: the bytes
     * were written after that page, so they go with the run. */
    return static_cast<ssize_t>(length);
}

/* Puts a queued stream in `place`. The standard streams are unbuffered, so
 * that each message follows the pages made before it at once; the others
 * are buffered and flushed into the queue before each page. */
void divert(FILE **place, bool console)
{
    if (*place == nullptr || divertedCount == DIVERTED_MOST)
        return;
    Diverted &entry = diverted[divertedCount];
    fflush(*place);
    entry.place = place;
    entry.real = *place;
    entry.target = HandedFile();
    entry.target.file = entry.real;
    entry.target.console = console;
    static const cookie_io_functions_t FUNCTIONS = {nullptr, divertedWrite, nullptr, nullptr};
    FILE *stream = fopencookie(&entry.target, "w", FUNCTIONS);
    if (stream == nullptr)
        return;
    if (console)
        setvbuf(stream, nullptr, _IONBF, 0);
    *place = stream;
    ++divertedCount;
}

/* The streams of files the run opened itself and writes module by module
 * (the exports), while they are open: their bytes go through the queue. */
std::vector<FILE *> handedStreams;
std::thread::id starter; /* the run's own thread, which writes them */

/* The run's directory when the thread started, with a "/": the thread
 * opens page files by full names, so that a change of the run's directory
 * while a page waits (none is made now; resolving a source's directory
 * once entered it) cannot move the page. */
std::string startDir;

/* Whether a maker writes its next page itself when the thread is behind. */
bool makersShare = false;

int handedStreamClose(void *cookie)
{
    HandedFile *file = static_cast<HandedFile *>(cookie);
    handedStreams.erase(std::find(handedStreams.begin(), handedStreams.end(), file->stream));
    queue(Piece{Piece::CLOSE, file});
    return 0;
}

/* Hands what the diverted and handed streams hold to the queue; only the
 * run's own thread writes to them. */
void flushDiverted()
{
    if (std::this_thread::get_id() != starter)
        return;
    for (size_t i = 0; i < divertedCount; ++i)
        fflush(*diverted[i].place);
    for (FILE *stream : handedStreams)
        fflush(stream);
}

/* Puts the real streams back; with `close`, the queued ones are closed. */
void undivert(bool close)
{
    for (size_t i = 0; i < divertedCount; ++i) {
        FILE *queued = *diverted[i].place;
        *diverted[i].place = diverted[i].real;
        if (close)
            fclose(queued);
    }
    if (close)
        divertedCount = 0;
}

/* Waits until every piece queued is written (lock held). */
void waitForTheLastPiece(std::unique_lock<std::mutex> &hold)
{
    draining = true;
    workWaits.notify_one();
    roomMade.wait(hold, [] { return pieces.empty() && !writing; });
}

/* Before a run that ends early leaves: what was handed off, pages and
 * messages, is written out, as the run would have written it before
 * reaching the end, unless the end comes from the thread itself. */
void writeOutBeforeExit()
{
    if (std::this_thread::get_id() == thread.get_id())
        return;
    flushDiverted();
    {
        std::unique_lock<std::mutex> hold(lock);
        waitForTheLastPiece(hold);
    }
    undivert(false);
}

} // namespace

void fileHandoffStart(bool shareWriting, const std::vector<FILE **> &alsoDiverted)
{
    if (active)
        return;
    char here[PATH_MAX];
    if (getcwd(here, sizeof here) == nullptr)
        return;
    startDir = std::string(here) + "/";
    makersShare = shareWriting;
    draining = false;
    stopping = false;
    if (ring == nullptr)
        ring.reset(new char[RING_SIZE]);
    /* Without the thread (the system refuses one), the run writes its
     * pages itself. */
    try {
        thread = std::thread(work);
    } catch (const std::system_error &) {
        return;
    }
    vemtra_Exit_Threads_Add(1);
    active = true;
    starter = std::this_thread::get_id();
    divert(&stdout, true);
    divert(&stderr, true);
    for (FILE **place : alsoDiverted)
        divert(place, false);
    vemtra_Exit_Threads_On_Exit(writeOutBeforeExit);
}

void fileHandoffFinish()
{
    if (!active)
        return;
    flushDiverted();
    {
        std::unique_lock<std::mutex> hold(lock);
        waitForTheLastPiece(hold);
        stopping = true;
        workWaits.notify_one();
    }
    thread.join();
    undivert(true);
    vemtra_Exit_Threads_On_Exit(nullptr);
    vemtra_Exit_Threads_Add(-1);
    active = false;
}

void fileHandoffWait()
{
    if (!active || std::this_thread::get_id() == thread.get_id())
        return;
    flushDiverted();
    std::unique_lock<std::mutex> hold(lock);
    waitForTheLastPiece(hold);
    draining = false;
}

FILE *handedOffPage(const std::string &path, const std::string &name, OpenFailure failure)
{
    if (!active)
        return nullptr;
    HandedFile *spare;
    {
        std::lock_guard<std::mutex> hold(lock);
        /* Behind: the maker writes this page itself. */
        if (makersShare && bytesWaiting() >= SHARE_BYTES)
            return nullptr;
        spare = takeSpareFile();
    }
    flushDiverted();
    /* A full name too long for the system keeps the run's relative one
     * (the run no longer changes its directory; the full name is a guard). */
    const bool relative = path[0] != '/' && startDir.size() + path.size() < PATH_MAX;
    HandedFile *file = newHandedFile(spare, relative ? startDir + path : path, name, std::move(failure));
    static const cookie_io_functions_t FUNCTIONS = {nullptr, streamWrite, nullptr, streamClose};
    FILE *stream = fopencookie(file, "w", FUNCTIONS);
    if (stream == nullptr)
        VEMTRA_Out_Of_Memory();
    file->stream = stream;
    currentPage = CurrentPage{stream, file};
    queue(Piece{Piece::OPEN, file});
    return stream;
}

bool handOffPageBytes(FILE *stream, const char *bytes, size_t length)
{
    if (!active || stream == nullptr || stream != currentPage.stream)
        return false;
    /* What the stream holds was written before these bytes. */
    fflush(stream);
    queueBytes(currentPage.file, bytes, length);
    return true;
}

FILE *handedOffStream(FILE *real, const std::string &name)
{
    if (!active || real == nullptr)
        return real;
    HandedFile *file = new HandedFile{name, name, OpenFailure{"", ""}};
    file->file = real;
    static const cookie_io_functions_t FUNCTIONS = {nullptr, divertedWrite, nullptr, handedStreamClose};
    FILE *stream = fopencookie(file, "w", FUNCTIONS);
    if (stream == nullptr) {
        delete file;
        return real;
    }
    file->stream = stream;
    handedStreams.push_back(stream);
    return stream;
}
