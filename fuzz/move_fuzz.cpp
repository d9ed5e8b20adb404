// Moves as text, one a line, on the position that the first line sets up (the start position if it is refused). After
// each move the record keeps what every record keeps.
#include "board/board.h"
#include "eval/eval.h"
#include "frontend/game_end.h"
#include "frontend/session.h"
#include "fuzz_support.h"

#include <algorithm>
#include <cstdlib>

static std::string takeLine(std::string_view& input) {
    const std::string line(input.substr(0, input.find('\n')));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    return line;
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    newGame();
    if (fenToBoard(takeLine(input).c_str()) == 0) {
        newGame();
    }
    constexpr i32 mostMoves = 2000;
    for (i32 i = 0; i < mostMoves && !input.empty(); ++i) {
        const Scacchiera* before = board;
        const i32 played = parseUserMove(takeLine(input).c_str());
        if (board != before + played || (played == 1 && leftInCheck() != 0)) {
            std::abort();
        }
        static_cast<void>(checkGameEnd());
        static_cast<void>(evaluate());
    }
    return 0;
}
