// Counting the move tree.
#include "board/board.h"
#include "board/make_move.h"

// Leaves behind the move just made; takes it back.
static u64 leavesAbove(i32 depth) {
    const u64 leaves = depth == 1 ? 1 : perft(depth - 1);
    --board;
    return leaves;
}

u64 perft(i32 depth) {
    assert(depth >= 1);
    const NodeMoves shared = nodeMoves();
    u64 total = 0;
    MoveList captures;
    genCaptures(captures);
    // In any order: a count does not show it.
    for (i32 i = 0; i < captures.count; ++i) {
        total += tryMove(shared, captures.entries[i].move) ? leavesAbove(depth) : 0;
    }
    QuietList quiets;
    genQuiets(quiets);
    for (i32 i = quiets.count - 1; i >= 0; --i) {
        total += tryMove(shared, quiets.entries[i]) ? leavesAbove(depth) : 0;
    }
    if (total != 0) {
        return total;
    }
    return shared.checkers == 0 ? 1 : 0;
}

u64 perftOrOne(i32 depth) {
    return depth == 0 ? 1 : perft(depth);
}
