// A writer in a child process that reports over a pipe and is killed with SIGKILL
// when the parent decides: the plumbing of the kill tests, apart from what they write.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace killtest {

constexpr std::uint32_t kFrameMagic = 0x4B11F8A3u;

// One report. A frame is far below PIPE_BUF, so one write puts it in the pipe whole
// or not at all; the check still refuses anything the child did not write.
struct Frame {
    std::uint32_t magic = kFrameMagic;
    std::uint32_t type = 0;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
    std::uint32_t d = 0;
    std::uint32_t check = 0;
};

inline std::uint32_t frameCheck(const Frame& f) {
    return f.magic ^ (f.type * 0x9E3779B1u) ^ (f.a * 0x85EBCA77u) ^ (f.b * 0xC2B2AE3Du) ^
           (f.c * 0x27D4EB2Fu) ^ (f.d * 0x165667B1u);
}

inline bool isWhole(const Frame& f) {
    return f.magic == kFrameMagic && f.check == frameCheck(f);
}

// Child side. A report that cannot be written ends the child: the parent would
// otherwise judge the file by a story with a gap in it.
inline void send(int fd, std::uint32_t type, std::uint32_t a = 0, std::uint32_t b = 0,
                 std::uint32_t c = 0, std::uint32_t d = 0) {
    Frame f;
    f.type = type;
    f.a = a;
    f.b = b;
    f.c = c;
    f.d = d;
    f.check = frameCheck(f);
    ssize_t written;
    do {
        written = ::write(fd, &f, sizeof f);
    } while (written < 0 && errno == EINTR);
    if (written != static_cast<ssize_t>(sizeof f)) ::_exit(4);
}

// Child side: blocks until the parent closes the hold pipe (it kills first).
[[noreturn]] inline void holdUntilKilled(int holdFd) {
    char c;
    while (::read(holdFd, &c, 1) < 0 && errno == EINTR) {
    }
    ::_exit(3);  // the parent went away instead of killing us
}

struct Outcome {
    std::string error;             // the round could not run as planned
    bool killed = false;           // the child died of our SIGKILL
    std::size_t partialBytes = 0;  // a frame cut short by the kill, ignored
};

struct KillWhen {
    // Asked before the first report and after each batch of reports.
    std::function<bool()> ready;
    int delayMicros = 0;  // from ready to the kill
};

// Forks `child(reportFd, holdFd)`, which must never return, hands every whole frame
// to `take`, kills the child as `when` says and waits for it. A child that makes
// no progress for `stallSeconds` is killed and reported as stalled.
inline Outcome runUntilKilled(const std::function<void(int, int)>& child,
                              const std::function<void(const Frame&)>& take, const KillWhen& when,
                              int stallSeconds = 10) {
    Outcome out;
    int reports[2];
    int hold[2];
    if (::pipe2(reports, O_CLOEXEC) != 0) return {std::string("pipe: ") + std::strerror(errno)};
    if (::pipe2(hold, O_CLOEXEC) != 0) {
        ::close(reports[0]);
        ::close(reports[1]);
        return {std::string("pipe: ") + std::strerror(errno)};
    }
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid < 0) {
        for (int fd : {reports[0], reports[1], hold[0], hold[1]}) ::close(fd);
        return {std::string("fork: ") + std::strerror(errno)};
    }
    if (pid == 0) {
        ::close(reports[0]);
        ::close(hold[1]);
        child(reports[1], hold[0]);
        ::_exit(5);
    }
    ::close(reports[1]);
    ::close(hold[0]);

    bool sent = false;
    bool stalled = false;
    auto killIfReady = [&] {
        if (sent || !when.ready()) return;
        std::this_thread::sleep_for(std::chrono::microseconds(when.delayMicros));
        ::kill(pid, SIGKILL);
        sent = true;
    };
    killIfReady();
    std::vector<unsigned char> pending;
    unsigned char buffer[4096];
    for (;;) {
        pollfd pfd = {reports[0], POLLIN, 0};
        const int ready = ::poll(&pfd, 1, stallSeconds * 1000);
        if (ready < 0 && errno == EINTR) continue;
        if (ready == 0 && !sent) {
            stalled = true;
            ::kill(pid, SIGKILL);
            sent = true;
            continue;
        }
        if (ready <= 0) break;
        const ssize_t n = ::read(reports[0], buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;  // every write end is closed: the child is gone
        pending.insert(pending.end(), buffer, buffer + n);
        std::size_t at = 0;
        for (; pending.size() - at >= sizeof(Frame); at += sizeof(Frame)) {
            Frame f;
            std::memcpy(&f, pending.data() + at, sizeof f);
            take(f);
        }
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(at));
        killIfReady();
    }
    out.partialBytes = pending.size();
    ::close(reports[0]);
    ::close(hold[1]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    out.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (stalled) {
        out.error = "the child made no progress for " + std::to_string(stallSeconds) + " s";
    } else if (WIFSIGNALED(status) && !out.killed) {
        out.error = "the child died of signal " + std::to_string(WTERMSIG(status));
    } else if (WIFEXITED(status)) {
        out.error = "the child exited with " + std::to_string(WEXITSTATUS(status)) +
                    " before it was killed";
    }
    return out;
}

}  // namespace killtest
