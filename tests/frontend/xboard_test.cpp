// The protocol loop in states that no line leads to.
#include "frontend_support.h"

#include "board/board.h"
#include "frontend/internal.h"

#include <cstdio>
#include <string>

namespace {

// Runs the loop with small tables over the lines; what it prints.
std::string runLines(std::string lines) {
    EngineOptions.hashEntries = 1024;
    EngineOptions.pawnHashEntries = 1024;
    EngineOptions.syzygy = 0;
    EngineOptions.book = 0;
    EngineOptions.maxDepth = 2;
    std::FILE* former = stdin;
    stdin = fmemopen(lines.data(), lines.size(), "rb");
    const std::string output = outputOf(xboardLoop);
    std::fclose(stdin);
    stdin = former;
    EngineOptions.quitRequest = 0;
    return output;
}

}  // namespace

// A flag that says that the expected move is on the board, when no move is.
TEST(XboardLoop, TakesNoMoveBackFromTheFirstPosition) {
    for (const char* lines : {"force\nusermove e2e4\n", "white\n"}) {
        SCOPED_TRACE(lines);
        setDefaults();
        EngineOptions.pondering = 1;
        EngineOptions.ponderMove = makeMossa(MOVE_PAWN, 12, 28);
        runLines(lines);
        EXPECT_EQ(board, boardStack.data() + 1);
        EXPECT_EQ(EngineOptions.pondering, 0);
    }
}
