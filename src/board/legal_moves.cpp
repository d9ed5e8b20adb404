// All moves of a position in one list: the pseudo-legal ones in the order of play, and the legal ones among them.
#include "board/board.h"
#include "board/make_move.h"

void orderedMoves(MoveArray& moves, i32& count) {
    MoveList captures;
    genCaptures(captures);
    QuietList quiets;
    genQuiets(quiets);
    count = 0;
    for (; captures.count != 0; --captures.count) {
        moves[count++] = pickBest(captures);
    }
    for (i32 i = quiets.count - 1; i >= 0; --i) {
        moves[count++] = quiets.entries[i];
    }
}

void legalMoves(MoveArray& moves, i32& count) {
    MoveArray all;
    i32 allCount = 0;
    orderedMoves(all, allCount);
    const NodeMoves shared = nodeMoves();
    count = 0;
    for (i32 i = 0; i < allCount; ++i) {
        if (tryMove<MakeDepth::light>(shared, all[i])) {
            --board;
            moves[count++] = all[i];
        }
    }
}
