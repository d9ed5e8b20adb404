// One search of the root list at a given depth and window. The list is searched in the order it has, every move with
// the full window; its scores make the order of the next iteration.
#include "search/internal.h"

#include "board/board.h"
#include "frontend/thinking_output.h"
#include "hash/hash.h"

// Mated, or nothing to move.
static i16 emptyRootValue(i32 depth, i32 mateScore) {
    if (inCheck() != 0) {
        return wrap16(-mateScore);
    }
    hashStore(depth, 0, HASH_EXACT, 0);
    return 0;
}

i16 rootSearch(RootList& rootList, i32 rootCount, i32 depth, i16 alpha, i16 beta, PvLine& line, i32 mateScore,
               i16 tbMen) {
    // A configured depth below 1 searches like depth 1: a node's depth is never negative.
    const i16 childDepth = wrap16(depth > 1 ? depth - 1 : 0);
    Mossa bestMove = 0;
    bool noMoveYet = true;
    for (i32 i = 0; i < rootCount; ++i) {
        RootMove& entry = rootList[i];
        thinkingSink.rootMove(entry.move, i + 1, rootCount);
        PvLine childLine{};
        makeMove(entry.move);
        if (leftInCheck() != 0) {
            --board;
            continue;
        }
        const i16 score = wrap16(-search(childDepth, 1, wrap16(-beta), wrap16(-alpha), childLine,
                                         wrap16(mateScore - 1), 1, 0, tbMen));
        --board;
        entry.score = score;
        noMoveYet = false;
        if (score > alpha) {
            if (score >= beta) {
                return beta;
            }
            bestMove = entry.move;
            copyLine(line, entry.move, childLine);
            alpha = score;
        }
    }
    if (noMoveYet) {
        return emptyRootValue(depth, mateScore);
    }
    // Deliberate: exact even when no move has raised alpha.
    hashStore(depth, alpha, HASH_EXACT, bestMove);
    return alpha;
}
