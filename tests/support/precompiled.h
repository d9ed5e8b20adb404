// What nearly every test includes, parsed once for all of them. Each file still includes what it uses: with
// -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON the tests build without this one.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>
