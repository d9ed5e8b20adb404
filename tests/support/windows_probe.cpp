// What the scripts cannot do from outside Windows. Prints what it saw; the scripts judge.
//
//   windows_probe processor-time     seconds of the processor for a sleep, then for work, each of at least 0.3 s
//   windows_probe one-pipe PROGRAM   starts the program with this input, and one pipe for its output and errors
//   windows_probe job PROGRAM        lets the program analyse in a job object, and closes the job
#include "platform/environment.h"
#include "platform/platform.h"
#include "platform/wide_windows.h"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <array>
#include <cstdio>
#include <string>

constexpr DWORD patienceMs = 120'000;

static int fail(const char* what) {
    std::printf("%s: error %lu\n", what, GetLastError());
    return 1;
}

// ---- processor time -------------------------------------------------------------------------------------------

static void showProcessorTime() {
    constexpr DWORD spanMs = 300;
    const double atFirst = processorSeconds();
    Sleep(spanMs);
    const double slept = processorSeconds();
    volatile u64 sum = 0;
    while (processorSeconds() - slept < spanMs / 1000.0) {
        for (u64 i = 0; i < 1'000'000; ++i) {
            sum = sum + i;
        }
    }
    const double worked = processorSeconds();
    std::printf("slept %.3f worked %.3f\n", slept - atFirst, worked - slept);
}

// ---- a program as a child -------------------------------------------------------------------------------------

namespace {

struct Pipe {
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
};

struct Child {
    HANDLE process = nullptr;
    HANDLE thread = nullptr;
};

}  // namespace

static Pipe makePipe() {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    Pipe pipe;
    CreatePipe(&pipe.reader, &pipe.writer, &inherited, 0);
    return pipe;
}

static HANDLE anotherHandleTo(HANDLE handle) {
    HANDLE other = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &other, 0, TRUE, DUPLICATE_SAME_ACCESS);
    return other;
}

// Starts the program, in the job if there is one.
static Child start(const std::string& program, HANDLE input, HANDLE output, HANDLE errors, HANDLE job) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = output;
    startup.hStdError = errors;
    PROCESS_INFORMATION information{};
    std::wstring command = L"\"" + wideOf(program) + L"\"";
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr,
                       &startup, &information) == 0) {
        return {};
    }
    if (job != nullptr && AssignProcessToJobObject(job, information.hProcess) == 0) {
        TerminateProcess(information.hProcess, 1);
        return {};
    }
    ResumeThread(information.hThread);
    return {information.hProcess, information.hThread};
}

static std::string readSome(HANDLE reader) {
    std::array<char, 4096> bytes;
    DWORD count = 0;
    ReadFile(reader, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    return {bytes.data(), count};
}

static int runOnOnePipe(const std::string& program) {
    const Pipe output = makePipe();
    const HANDLE errors = anotherHandleTo(output.writer);
    const HANDLE input = anotherHandleTo(GetStdHandle(STD_INPUT_HANDLE));
    const Child child = start(program, input, output.writer, errors, nullptr);
    if (child.process == nullptr) {
        return fail("start");
    }
    CloseHandle(output.writer);
    CloseHandle(errors);
    for (std::string text = readSome(output.reader); !text.empty(); text = readSome(output.reader)) {
        std::fwrite(text.data(), 1, text.size(), stdout);
    }
    WaitForSingleObject(child.process, patienceMs);
    DWORD status = 0;
    GetExitCodeProcess(child.process, &status);
    std::printf("status %lu\n", status);
    return 0;
}

static HANDLE jobThatKills() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

static int closeJob(const std::string& program) {
    const Pipe input = makePipe();
    const Pipe output = makePipe();
    const HANDLE job = jobThatKills();
    const Child child = start(program, input.reader, output.writer, output.writer, job);
    if (child.process == nullptr) {
        return fail("start");
    }
    CloseHandle(output.writer);
    const std::string commands = "xboard\nnew\nanalyze\n";
    DWORD written = 0;
    WriteFile(input.writer, commands.data(), static_cast<DWORD>(commands.size()), &written, nullptr);
    std::string text;
    while (text.find("\n 3 ") == std::string::npos) {  // its third depth
        const std::string more = readSome(output.reader);
        if (more.empty()) {
            return fail("analysis");
        }
        text += more;
    }
    const bool ranBefore = WaitForSingleObject(child.process, 0) == WAIT_TIMEOUT;
    CloseHandle(job);
    const bool ended = WaitForSingleObject(child.process, patienceMs) == WAIT_OBJECT_0;
    std::printf("ran %d ended %d\n", ranBefore ? 1 : 0, ended ? 1 : 0);
    return 0;
}

int main(int argc, char** argv) {
    makeStreamsBinary();
    const std::vector<std::string> words = programArguments(argc, argv);
    if (words.size() == 1 && words[0] == "processor-time") {
        showProcessorTime();
        return 0;
    }
    if (words.size() == 2 && words[0] == "one-pipe") {
        return runOnOnePipe(words[1]);
    }
    if (words.size() == 2 && words[0] == "job") {
        return closeJob(words[1]);
    }
    return 2;
}
