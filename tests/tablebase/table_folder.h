// A folder with table files for one test, and the simplest of files.
#pragma once

#include "support/test_data.h"
#include "table_writer.h"
#include "tablebase/internal.h"
#include "tablebase/tablebase.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>

// A folder of its own for each test, with tables in it.
struct TableFolder {
    std::filesystem::path path;

    TableFolder() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("tables-") + test->test_suite_name() + "-" + test->name();
        std::replace(name.begin(), name.end(), '/', '-');
        path =
            std::filesystem::path(testing::TempDir()) / (name + "-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(path);
    }
    TableFolder(const TableFolder&) = delete;
    TableFolder& operator=(const TableFolder&) = delete;
    ~TableFolder() {
        testing::internal::CaptureStdout();
        tbInit("/nowhere");
        testing::internal::GetCapturedStdout();
        std::filesystem::remove_all(path);
    }

    void write(const std::string& file, const std::string& bytes) const {
        std::ofstream(path / file, std::ios::binary) << bytes;
    }
};

inline std::string realBytes(const std::string& file) {
    std::ifstream stream(testDataPath("syzygy/" + file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline writer::StreamPlan constantPlan(u8 value) {
    return writer::StreamPlan{{{value, 1}}, 0, true, 0, 0, 0, 0, false, false};
}

/// Bytes that tell the order of the men, the same for both sides: places in the index, then pieces.
inline std::string orderOf(std::initializer_list<i32> numbers) {
    std::string bytes;
    for (const i32 number : numbers) {
        bytes += static_cast<char>(number | number << 4);
    }
    return bytes;
}
