// Where the files of tests/data are.
#pragma once

#include <string>

/// Full name of a file or folder of tests/data: testDataPath("golden/eval.txt").
[[nodiscard]] std::string testDataPath(const std::string& name);
