// Lines out and lines in.
#include "platform/print.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

TEST(Print, TextWaitsForItsNewline) {
    testing::internal::CaptureStdout();
    print("%d", 12);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    print("%s\nrest", "34");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1234\n");
    testing::internal::CaptureStdout();
    flushOutput();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "rest");
    testing::internal::CaptureStdout();
    flushOutput();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Print, TextOfAnyLengthIsWhole) {
    for (const std::size_t length : {510, 511, 512, 513, 100000}) {
        const std::string text(length, 'y');
        testing::internal::CaptureStdout();
        print("%s\n", text.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text + "\n");
    }
}

TEST(Print, LinesBeginWithThePrefixOfTheirThread) {
    testing::internal::CaptureStdout();
    setLinePrefix("# ");
    print("one\ntwo\nth");
    std::thread([] { print("plain\n"); }).join();
    print("ree\n\n");
    setLinePrefix("");
    print("four\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "# one\n# two\nplain\n# three\n# \nfour\n");
}

TEST(Print, LinesWithoutAPrefixAreDropped) {
    testing::internal::CaptureStdout();
    setLinePrefix(nullptr);
    print("one\ntwo\nth");
    flushOutput();
    print("ree\n");
    setLinePrefix("");
    print("four\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "four\n");
}

TEST(Print, ThreadsNeverMixTheirLines) {
    constexpr int threadCount = 4;
    constexpr int linesEach = 500;
    testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < linesEach; ++line) {
                print("%d ", thread);
                print("%d", line);
                print(" end\n");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::istringstream output(testing::internal::GetCapturedStdout());
    std::map<int, int> next;
    for (std::string line; std::getline(output, line);) {
        int thread = -1;
        int number = -1;
        ASSERT_EQ(std::sscanf(line.c_str(), "%d %d", &thread, &number), 2) << line;
        EXPECT_EQ(line, std::to_string(thread) + " " + std::to_string(number) + " end");
        EXPECT_EQ(number, next[thread]++);
    }
    for (int thread = 0; thread < threadCount; ++thread) {
        EXPECT_EQ(next[thread], linesEach);
    }
}

TEST(PrintDeathTest, ALineIsOutAtOnceThoughTheStreamHasABuffer) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // other tests of this program run threads
    EXPECT_EXIT(
        {
            dup2(STDERR_FILENO, STDOUT_FILENO);  // whose text is looked at
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            print("a line\n");
            _exit(0);
        },
        testing::ExitedWithCode(0), "a line");
}

// Standard output is another open file for as long as this lives.
struct OutputTo {
    explicit OutputTo(int descriptor) {
        std::fflush(stdout);
        former = dup(STDOUT_FILENO);
        dup2(descriptor, STDOUT_FILENO);
        std::setvbuf(stdout, nullptr, _IONBF, 0);
    }
    OutputTo(const OutputTo&) = delete;
    OutputTo& operator=(const OutputTo&) = delete;
    ~OutputTo() {
        dup2(former, STDOUT_FILENO);
        close(former);
        std::clearerr(stdout);
    }
    int former;
};

// Whether the thread comes to sleep within ten seconds; one that only waits for the processor does not sleep.
static bool comesToSleep(pid_t thread) {
    for (int tries = 0; tries < 1000; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::string status;
        std::getline(file, status);
        if (status.find(") S ") != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(Print, SleepsUntilAFullPipeThatDoesNotBlockHasRoom) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const std::string text = std::string(300000, 'x') + "\n";
    const pid_t writer = gettid();
    bool slept = false;
    std::string received;
    std::thread reader([&] {
        slept = comesToSleep(writer);
        std::array<char, 4096> piece;
        while (received.size() < text.size()) {
            const ssize_t length = read(ends[0], piece.data(), piece.size());
            if (length > 0) {
                received.append(piece.data(), static_cast<std::size_t>(length));
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    {
        const OutputTo output(ends[1]);
        print("%s", text.c_str());
    }
    reader.join();
    EXPECT_TRUE(slept);
    EXPECT_TRUE(received == text);
    close(ends[0]);
    close(ends[1]);
}

TEST(Print, ALineThatCannotBeWrittenIsDropped) {
    const int readable = open("/dev/null", O_RDONLY);
    {
        const OutputTo output(readable);
        print("lost\n");
    }
    close(readable);
    testing::internal::CaptureStdout();
    print("next\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "next\n");
}

// Standard input is another open file for as long as this lives.
struct InputFrom {
    explicit InputFrom(int descriptor) : former(dup(STDIN_FILENO)) {
        dup2(descriptor, STDIN_FILENO);
        std::clearerr(stdin);
        std::setvbuf(stdin, nullptr, _IONBF, 0);
    }
    InputFrom(const InputFrom&) = delete;
    InputFrom& operator=(const InputFrom&) = delete;
    ~InputFrom() {
        dup2(former, STDIN_FILENO);
        close(former);
        std::clearerr(stdin);
    }
    int former;
};

static std::vector<std::string> readLines() {
    std::vector<std::string> lines;
    char line[lineBufferSize];
    while (readLine(line)) {
        lines.emplace_back(line);
    }
    return lines;
}

// A file that holds a text, at its start. The caller closes it.
static std::FILE* fileOf(const std::string& text) {
    std::FILE* file = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
    return file;
}

static std::vector<std::string> linesOf(const std::string& text) {
    std::FILE* file = fileOf(text);
    const InputFrom input(fileno(file));
    const std::vector<std::string> lines = readLines();
    std::fclose(file);
    return lines;
}

struct LineCase {
    const char* name;
    std::string text;
    std::vector<std::string> lines;
};

TEST(ReadLine, GivesTheLinesOfAnyInput) {
    const LineCase cases[] = {
        {"nothing", "", {}},
        {"an empty line", "\n", {""}},
        {"two lines", "one\ntwo\n", {"one", "two"}},
        {"a last line without newline", "one\ntwo", {"one", "two"}},
        {"a carriage return before the newline", "one\r\n\r\ntwo\rthree\n", {"one", "", "two\rthree"}},
        {"a carriage return at the end of input stays", "one\r", {"one\r"}},
        {"255 characters and a newline are two lines",
         std::string(255, 'a') + "\n",
         {std::string(255, 'a'), ""}},
        {"254 characters and a newline are one", std::string(254, 'a') + "\n", {std::string(254, 'a')}},
        {"the rest of a longer line comes next",
         std::string(300, 'a') + "\nb\n",
         {std::string(255, 'a'), std::string(45, 'a'), "b"}},
        {"a NUL cuts its line", std::string("on\0e\ntwo\n", 9), {"on", "two"}},
    };
    for (const LineCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(linesOf(c.text), c.lines);
    }
}

TEST(ReadLine, WaitsForAThreadBehindAPipeThatDoesNotBlock) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const InputFrom input(ends[0]);
    std::thread writer([&ends] {
        for (const std::string piece : {"one\nt", "w", "o\nthr", "ee"}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_EQ(write(ends[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
        }
        close(ends[1]);
    });
    EXPECT_EQ(readLines(), (std::vector<std::string>{"one", "two", "three"}));
    writer.join();
    close(ends[0]);
}

TEST(ReadLine, ClearsTheBufferBehindTheLine) {
    std::FILE* file = fileOf("a long line\nb\n");
    const InputFrom input(fileno(file));
    char line[lineBufferSize];
    ASSERT_TRUE(readLine(line));
    ASSERT_TRUE(readLine(line));
    EXPECT_EQ(std::string(line, sizeof line), "b" + std::string(sizeof line - 1, '\0'));
    std::fclose(file);
}
