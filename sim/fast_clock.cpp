// Preloaded into the gateway only: lets its pauses pass a thousand times faster. Nothing but the
// length of pauses changes; clocks and time-outs keep real time. An interrupted pause tells what is
// left of it in the caller's own, unscaled seconds, as the C library does (sleep drops the
// fraction).

#include <dlfcn.h>
#include <errno.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

static constexpr long long billion = 1000000000LL;

static long long nanoseconds(const timespec& time) {
    return time.tv_sec * billion + time.tv_nsec;
}

static timespec to_timespec(long long count) {
    timespec time = {};
    time.tv_sec = static_cast<time_t>(count / billion);
    time.tv_nsec = static_cast<long>(count % billion);
    return time;
}

// Times faster, from the environment: 1 leaves pauses as they are.
static long long speed() {
    const char* text = getenv("FAST_CLOCK_SPEED");
    const long value = text != nullptr ? atol(text) : 1;
    return value > 0 ? value : 1;
}

// Pauses for a shortened time. Returns what is left, unscaled: 0 unless a signal came.
static long long pause_scaled(long long wanted) {
    using Nanosleep = int (*)(const timespec*, timespec*);
    static const Nanosleep real_nanosleep =
        reinterpret_cast<Nanosleep>(dlsym(RTLD_NEXT, "nanosleep"));
    const timespec request = to_timespec(wanted / speed());
    timespec left = {};
    return real_nanosleep(&request, &left) == 0 ? 0 : nanoseconds(left) * speed();
}

extern "C" unsigned sleep(unsigned seconds) {
    const long long left = pause_scaled(seconds * billion);
    return static_cast<unsigned>(left / billion);
}

extern "C" int usleep(useconds_t microseconds) {
    if (pause_scaled(microseconds * 1000LL) != 0) {
        errno = EINTR;
        return -1;
    }
    return 0;
}

extern "C" int nanosleep(const timespec* request, timespec* left) {
    const long long rest = pause_scaled(nanoseconds(*request));
    if (rest == 0) {
        return 0;
    }
    if (left != nullptr) {
        *left = to_timespec(rest);
    }
    errno = EINTR;
    return -1;
}

extern "C" int clock_nanosleep(clockid_t clock, int flags, const timespec* request,
                               timespec* left) {
    timespec wanted = *request;
    if (flags & TIMER_ABSTIME) {
        timespec now = {};
        clock_gettime(clock, &now);
        const long long ahead = nanoseconds(*request) - nanoseconds(now);
        wanted = to_timespec(ahead > 0 ? ahead : 0);
        left = nullptr;
    }
    return nanosleep(&wanted, left) == 0 ? 0 : EINTR;
}
