// Opening and mapping: what is there, what is not, and what only looks like a file.
#include "platform/platform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

static bool streamsFail = false;

// The linker calls the first for the C library's, which has the second name then: a stream that there is no memory for.
extern "C" std::FILE* __wrap_fdopen(int descriptor, const char* mode);
extern "C" std::FILE* __real_fdopen(int descriptor, const char* mode);
extern "C" std::FILE* __wrap_fdopen(int descriptor, const char* mode) {
    return streamsFail ? nullptr : __real_fdopen(descriptor, mode);
}

// What a record may hold before a file is mapped into it.
static const u8 otherByte = 0;
static const MappedFile mappingOfBefore{&otherByte, 1};

static void expectNoBytes(const MappedFile& mapped) {
    EXPECT_EQ(mapped.data, nullptr);
    EXPECT_EQ(mapped.size, 0U);
}

class Files : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "tarvelmon-files-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { fs::remove_all(folder); }

    std::string write(const char* name, const std::string& content) const {
        const std::string path = (folder / name).string();
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    // Every kind of thing that is no regular file, blocks when it is opened, or is not there.
    std::array<std::string, 4> noFiles() const {
        const std::string pipe = (folder / "pipe").string();
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        return {folder.string(), pipe, "/dev/zero", (folder / "missing").string()};
    }

    fs::path folder;
};

TEST_F(Files, AreReadAsBytes) {
    const std::string content("a\r\nb\0c\n", 7);
    std::FILE* file = openRegularFile(write("bytes", content).c_str());
    ASSERT_NE(file, nullptr);
    std::array<char, 16> read{};
    EXPECT_EQ(std::fread(read.data(), 1, read.size(), file), content.size());
    EXPECT_EQ(std::memcmp(read.data(), content.data(), content.size()), 0);
    std::fclose(file);
}

TEST_F(Files, TellTheirSizeAndAreReadFromAnyByteOn) {
    std::FILE* file = openRegularFile(write("digits", "0123456789").c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(fileSize(file), 10);
    EXPECT_TRUE(seekFile(file, 7));
    EXPECT_EQ(std::fgetc(file), '7');
    EXPECT_FALSE(seekFile(file, -1));
    std::fclose(file);
}

TEST_F(Files, AreWrittenAnewOrAtTheirEnd) {
    const std::string path = write("old", "a long content\n");
    for (std::FILE* (*const open)(const char*) : {createFile, openForAppending}) {
        std::FILE* file = open(path.c_str());
        ASSERT_NE(file, nullptr);
        std::fputs("a\n", file);
        std::fclose(file);
    }
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "a\na\n");
    EXPECT_EQ(createFile(folder.c_str()), nullptr);
    EXPECT_EQ(openForAppending(folder.c_str()), nullptr);
}

TEST_F(Files, OnlyInMemoryHaveNoSize) {
    char bytes[] = "0123456789";
    std::FILE* stream = fmemopen(bytes, sizeof bytes, "rb");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(fileSize(stream), -1);
    std::fclose(stream);
}

TEST_F(Files, ThatGetNoStreamAreClosed) {
    const std::string path = write("bytes", "a");
    const int lowest = dup(STDIN_FILENO);
    close(lowest);
    streamsFail = true;
    EXPECT_EQ(openRegularFile(path.c_str()), nullptr);
    streamsFail = false;
    const int next = dup(STDIN_FILENO);
    EXPECT_EQ(next, lowest);
    close(next);
}

TEST_F(Files, ThatAreNoneAreRefusedWithoutWaiting) {
    for (const std::string& path : noFiles()) {
        SCOPED_TRACE(path);
        errno = 0;
        EXPECT_EQ(openRegularFile(path.c_str()), nullptr);
        EXPECT_NE(errno, 0);
        MappedFile mapped = mappingOfBefore;
        EXPECT_EQ(mapFile(path.c_str(), mapped), MapResult::cannotOpen);
        expectNoBytes(mapped);
    }
}

TEST_F(Files, AreMappedWhole) {
    const std::string content(10000, 'x');
    MappedFile mapped{};
    ASSERT_EQ(mapFile(write("whole", content).c_str(), mapped), MapResult::mapped);
    ASSERT_EQ(mapped.size, content.size());
    EXPECT_EQ(std::memcmp(mapped.data, content.data(), content.size()), 0);
    unmapFile(mapped);
    expectNoBytes(mapped);
    unmapFile(mapped);
}

TEST_F(Files, WithoutBytesCannotBeMapped) {
    MappedFile mapped = mappingOfBefore;
    EXPECT_EQ(mapFile(write("empty", "").c_str(), mapped), MapResult::cannotMap);
    expectNoBytes(mapped);
}
