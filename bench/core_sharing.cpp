// core_sharing.cpp -- how much work on the other processor slows this one:
// a loop of additions and exclusive ors (all in registers, no memory)
// timed alone, then while the same loop runs on a second thread.
// Two processors of their own give about 1.0; two hardware threads of one
// core, as a virtual machine's processors are sometimes placed, give 1.5
// or more, and every run that keeps both processors busy (the default
// report: the run on one, the file thread's kernel work on the other) is
// then charged more processor time for the same work. The time alone
// grows too when the host runs other work on the same core (0.14 s for
// the default count on a core of its own here, up to 0.25 s in a busy
// hour). The benchmarks print it beside their rounds.
//
//   core_sharing [million iterations, 150 unless given]
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

namespace {

// The processor time of the calling thread, in seconds.
double threadSeconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Eight running values, each updated from another, kept in registers and
// kept from being folded away; returns the processor time it took.
double timedLoop(int64_t iterations)
{
    double start = threadSeconds();
    uint64_t a = 1, b = 2, c = 3, d = 4, e = 5, f = 6, g = 7, h = 8;
    for (int64_t i = 0; i < iterations; ++i) {
        uint64_t n = static_cast<uint64_t>(i);
        a += n;
        b ^= n;
        c += a;
        d ^= b;
        e += c;
        f ^= d;
        g += e;
        h ^= f;
        __asm__ volatile("" : "+r"(a), "+r"(b), "+r"(c), "+r"(d), "+r"(e), "+r"(f), "+r"(g), "+r"(h));
    }
    return threadSeconds() - start;
}

} // namespace

int main(int argc, char **argv)
{
    int64_t iterations = (argc > 1 ? atoll(argv[1]) : 150) * 1000000;
    if (iterations <= 0) {
        fprintf(stderr, "usage: %s [million iterations]\n", argv[0]);
        return 1;
    }
    double alone = timedLoop(iterations);
    std::thread second([iterations] { timedLoop(iterations); });
    double beside = timedLoop(iterations);
    second.join();
    printf("core sharing: an arithmetic loop %.3f s alone, %.3f s beside another (%.2f x)\n", alone, beside,
           alone > 0 ? beside / alone : 0.0);
    return 0;
}
