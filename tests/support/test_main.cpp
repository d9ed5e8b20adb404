// Entry point of every test program: lets a think print as the engine does, then runs the tests.
#include "frontend/thinking_lines.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    thinkingSink = printedThinking;
    return RUN_ALL_TESTS();
}
