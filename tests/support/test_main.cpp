// Entry point of every test program: fills the tables once, then runs the tests.
#include "board/board.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    initBoardTables();
    return RUN_ALL_TESTS();
}
