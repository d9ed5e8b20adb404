// What the tests on table files share: where real tables lie, and probes of a FEN.
#pragma once

#include "board/board.h"
#include "frontend/session.h"
#include "support/position.h"
#include "tablebase/tablebase.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <string>

namespace tables {

/// A folder with all tables of three and four men, from TARVELMON_SYZYGY_PATH; empty if there is none.
[[nodiscard]] inline std::string realFolder() {
    const char* path = std::getenv("TARVELMON_SYZYGY_PATH");
    return path == nullptr ? "" : path;
}

/// Registers the tables of a folder; what tbInit prints.
inline std::string registerFolder(const std::string& folder) {
    testing::internal::CaptureStdout();
    tbInit(folder.c_str());
    return testing::internal::GetCapturedStdout();
}

struct Values {
    i32 wdl;
    i32 dtz;
    bool wdlKnown;
    bool dtzKnown;
};

/// Whether the WDL table knows the position; its value then.
[[nodiscard]] inline bool wdlOf(const std::string& fen, i32& wdl) {
    setUpPosition(fen);
    i32 success = 0;
    wdl = probeWdl(success);
    return success != 0;
}

[[nodiscard]] inline Values probe(const std::string& fen) {
    setUpPosition(fen);
    i32 wdlSuccess = 0;
    const i32 wdl = probeWdl(wdlSuccess);
    i32 dtzSuccess = 0;
    const i32 dtz = probeDtz(dtzSuccess);
    return Values{wdl, dtz, wdlSuccess != 0, dtzSuccess != 0};
}

}  // namespace tables
