// Workers are copies of this process (fork), made when there is a position and nobody free, so the tables that the
// start has filled are shared. A worker reads positions from one pipe and writes answers to another; it ends when its
// input does, and when it sees that its parent has gone.
#include "worker_pool.h"

#include "messages.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

// ---- signals --------------------------------------------------------------------------------------------------

static volatile std::sig_atomic_t signalCaught = 0;

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};

static void noteSignal(int number) {
    signalCaught = number;
}

void catchSignals() {
    struct sigaction action {};
    action.sa_handler = noteSignal;  // without SA_RESTART: who waits for input wakes up
    for (const int number : endingSignals) {
        sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

i32 caughtSignal() {
    return signalCaught;
}

// ---- bytes through pipes --------------------------------------------------------------------------------------

static bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

// Adds what there is. False at the end.
static bool readSome(int descriptor, std::string& bytes) {
    char buffer[1 << 16];
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer, sizeof buffer);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        return false;
    }
    bytes.append(buffer, static_cast<std::size_t>(count));
    return true;
}

static bool takeFirstLine(std::string& bytes, std::string& line) {
    const std::size_t end = bytes.find('\n');
    if (end == std::string::npos) {
        return false;
    }
    line = bytes.substr(0, end);
    bytes.erase(0, end + 1);
    return true;
}

// ---- inside a worker ------------------------------------------------------------------------------------------

static pid_t parentProcess = 0;

constexpr int noMemoryStatus = 3;

static bool parentLives() {
    return getppid() == parentProcess;
}

[[noreturn]] static void work(int input, int output, const PoolOrder& order) {
    if (!setUpAnalysis(order.hashMegabytes)) {
        _exit(noMemoryStatus);
    }
    std::string bytes;
    std::string line;
    while (readSome(input, bytes)) {
        while (takeFirstLine(bytes, line)) {
            Position position;
            if (!readMessage(line, position)) {
                _exit(1);
            }
            const Analysis analysis = analysePosition(position, order.limits, parentLives);
            if (!parentLives() || !writeAll(output, messageOf(analysis) + "\n")) {
                _exit(1);
            }
        }
    }
    _exit(0);
}

// ---- the workers from outside ---------------------------------------------------------------------------------

namespace {

struct Worker {
    pid_t process;
    int toWorker;
    int fromWorker;
    std::string received;
    bool busy;
    u64 number;  // of its position
};

struct Pool {
    const PoolOrder& order;
    sigset_t unblocked;  // the signals as they were before
    std::size_t jobs;    // workers at most
    std::vector<Worker> workers{};
    u64 given = 0;
    bool noMore = false;
};

}  // namespace

// Another worker's pipes would stay open as long as this one lives.
static void closeOthers(const Pool& pool) {
    for (const Worker& worker : pool.workers) {
        close(worker.toWorker);
        close(worker.fromWorker);
    }
}

[[noreturn]] static void becomeWorker(const Pool& pool, int input, int output) {
    closeOthers(pool);
    for (const int number : endingSignals) {
        std::signal(number, number == SIGINT ? SIG_IGN : SIG_DFL);  // a terminal's ^C is the parent's affair
    }
    sigprocmask(SIG_SETMASK, &pool.unblocked, nullptr);
    work(input, output, pool.order);
}

static bool startWorker(Pool& pool) {
    int in[2];
    int out[2];
    if (pipe(in) != 0) {
        return false;
    }
    if (pipe(out) != 0) {
        close(in[0]);
        close(in[1]);
        return false;
    }
    parentProcess = getpid();
    const pid_t process = fork();
    if (process == 0) {
        close(in[1]);
        close(out[0]);
        becomeWorker(pool, in[0], out[1]);
    }
    close(in[0]);
    close(out[1]);
    if (process < 0) {
        close(in[1]);
        close(out[0]);
        return false;
    }
    pool.workers.push_back({process, in[1], out[0], {}, false, 0});
    return true;
}

// What became of a worker, in words.
static std::string bury(const Worker& worker) {
    close(worker.toWorker);
    close(worker.fromWorker);
    int status = 0;
    while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        return "the worker was ended by signal " + std::to_string(WTERMSIG(status));
    }
    if (WEXITSTATUS(status) == noMemoryStatus) {
        return "there is not enough memory for the hash table";
    }
    return "the worker ended with status " + std::to_string(WEXITSTATUS(status));
}

static void endWorkers(Pool& pool, bool atOnce) {
    for (const Worker& worker : pool.workers) {
        if (atOnce) {
            kill(worker.process, SIGKILL);
        }
    }
    for (const Worker& worker : pool.workers) {
        bury(worker);
    }
    pool.workers.clear();
}

// ---- handing out and taking in --------------------------------------------------------------------------------

static Worker* freeWorker(Pool& pool) {
    for (Worker& worker : pool.workers) {
        if (!worker.busy) {
            return &worker;
        }
    }
    return nullptr;
}

static bool anyBusy(const Pool& pool) {
    for (const Worker& worker : pool.workers) {
        if (worker.busy) {
            return true;
        }
    }
    return false;
}

static bool mayTakeMore(Pool& pool) {
    return freeWorker(pool) != nullptr || pool.workers.size() < pool.jobs;
}

// A worker that has died while it was free is noticed when its pipe is read.
static void give(Worker& worker, u64 number, const Position& position) {
    worker.busy = true;
    worker.number = number;
    static_cast<void>(writeAll(worker.toWorker, messageOf(position) + "\n"));
}

// Hands out positions as long as there are some and somebody is free. False if there is no process to be had.
static bool handOut(Pool& pool) {
    while (!pool.noMore && mayTakeMore(pool)) {
        if (freeWorker(pool) == nullptr && !startWorker(pool)) {
            pool.jobs = pool.workers.size();  // those that there are go on
            return pool.jobs > 0;
        }
        Position position;
        const NextPosition next = pool.order.next(position);
        if (next == NextPosition::notYet) {
            return true;
        }
        if (next == NextPosition::noMore) {
            pool.noMore = true;
            return true;
        }
        give(*freeWorker(pool), pool.given, position);
        ++pool.given;
    }
    return true;
}

static Analysis faulty(const std::string& fault) {
    return {fault, Standstill::none, 0, 0, 0, 0, {}, {}};
}

static bool takeAnswer(Pool& pool, Worker& worker) {
    std::string line;
    if (!takeFirstLine(worker.received, line)) {
        return true;
    }
    Analysis analysis{};
    if (!readMessage(line, analysis)) {
        analysis = faulty("the worker's answer cannot be read");
    }
    worker.busy = false;
    return pool.order.take(worker.number, analysis);
}

// Reads from a worker whose pipe is ready. False if the answer was refused.
static bool listen(Pool& pool, std::size_t index) {
    Worker& worker = pool.workers[index];
    if (readSome(worker.fromWorker, worker.received)) {
        return takeAnswer(pool, worker);
    }
    const Worker dead = worker;
    pool.workers.erase(pool.workers.begin() + static_cast<std::ptrdiff_t>(index));
    const std::string fault = bury(dead);
    return !dead.busy || pool.order.take(dead.number, faulty(fault));
}

// Waits for input or answers, for half a second at most. False if an answer was refused.
static bool waitAndListen(Pool& pool) {
    std::vector<pollfd> waits;
    for (const Worker& worker : pool.workers) {
        waits.push_back({worker.fromWorker, POLLIN, 0});
    }
    const std::size_t count = waits.size();
    if (!pool.noMore && mayTakeMore(pool)) {
        waits.push_back({pool.order.inputDescriptor(), POLLIN, 0});
    }
    constexpr timespec halfSecond{0, 500'000'000};
    if (ppoll(waits.data(), waits.size(), &halfSecond, &pool.unblocked) <= 0) {
        return true;
    }
    for (std::size_t i = count; i-- > 0;) {  // from behind: a dead worker leaves the list
        if (waits[i].revents != 0 && !listen(pool, i)) {
            return false;
        }
    }
    return true;
}

static PoolEnd serve(Pool& pool) {
    for (;;) {
        if (signalCaught != 0) {
            return PoolEnd::interrupted;
        }
        if (!handOut(pool)) {
            return PoolEnd::noProcess;
        }
        if (pool.noMore && !anyBusy(pool)) {
            return PoolEnd::done;
        }
        if (!waitAndListen(pool)) {
            return PoolEnd::refused;
        }
        pool.order.tick();
    }
}

PoolEnd runPool(const PoolOrder& order) {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int number : endingSignals) {
        sigaddset(&blocked, number);
    }
    Pool pool{order, {}, static_cast<std::size_t>(order.jobs)};
    sigprocmask(SIG_BLOCK, &blocked, &pool.unblocked);
    const PoolEnd end = serve(pool);
    endWorkers(pool, end != PoolEnd::done);
    sigprocmask(SIG_SETMASK, &pool.unblocked, nullptr);
    return end;
}
