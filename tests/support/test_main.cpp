// Entry point of every test program: fills the tables once, lets a think print as the engine does, then runs the tests.
#include "board/board.h"
#include "frontend/thinking_lines.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    initBoardTables();
    thinkingSink = printedThinking;
    return RUN_ALL_TESTS();
}
