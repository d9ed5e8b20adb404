// A directory of its own for a test that reads real files; it goes with the test.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

struct TempDirectory {
    std::filesystem::path path;

    TempDirectory() {
        std::random_device device;
        do {
            path = std::filesystem::temp_directory_path() / ("tarvelmon-test-" + std::to_string(device()));
        } while (!std::filesystem::create_directory(path));
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    /// Full name of a file of this directory, whether it is there or not.
    [[nodiscard]] std::string nameOf(std::string_view file) const { return (path / file).string(); }

    /// Writes `bytes` as a file and returns its full name.
    [[nodiscard]] std::string write(std::string_view file, std::string_view bytes) const {
        const std::string name = nameOf(file);
        std::ofstream stream(name, std::ios::binary | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return name;
    }
};
