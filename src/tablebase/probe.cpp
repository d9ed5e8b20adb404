// Values of positions: what the tables store, joined with a small search over captures and en passant. A table's value
// is right only where no capture is better, so the captures come first. All values are from the side to move.
#include "tablebase/tablebase.h"

#include "tablebase/internal.h"

#include <algorithm>

constexpr i32 noValue = -3;  // below every WDL value

// Makes `move`, which counts as a node; false, with `board` where it was, if it leaves the own king attacked.
static bool makeLegal(Mossa move) {
    makeMoveLight(move);
    if (leftInCheck() != 0) {
        --board;
        return false;
    }
    return true;
}

i32 probeCaptures(i32 alpha, i32 beta, i32& success) {
    assert(boardIsRecord() && alpha >= -2 && alpha < beta && beta <= 2);
    if (!mayBeProbed(*board)) {
        success = 0;
        return 0;
    }
    MoveList captures;
    for (genCapturesNoEp(captures); captures.count != 0; --captures.count) {
        if (!makeLegal(pickBest(captures))) {
            continue;
        }
        const i32 value = -probeCaptures(-beta, -alpha, success);
        --board;
        if (success == 0) {
            return 0;
        }
        if (value >= beta) {
            success = 2;
            return value;
        }
        alpha = std::max(alpha, value);
    }
    const i32 stored = probeWdlTable(success);
    if (success == 0) {
        return 0;
    }
    success = stored > alpha || alpha < 1 ? 1 : 2;
    return std::max(stored, alpha);
}

// ---- en passant -----------------------------------------------------------------------------------------------

namespace {

// What the en passant captures of a position come to.
struct EpCaptures {
    i32 best;        // of the WDL values of all of them; noValue if there is none
    bool onlyMoves;  // no other move is legal
};

}  // namespace

static EpCaptures probeEpCaptures(i32& success) {
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    EpCaptures ep{noValue, false};
    i32 epCount = 0;
    for (i32 i = 0; i < count; ++i) {
        if (moveKind(moves[i]) != EN_PASSANT) {
            continue;
        }
        ++epCount;
        makeMoveLight(moves[i]);
        const i32 value = -probeCaptures(-2, 2, success);
        --board;
        if (success == 0) {
            return ep;
        }
        ep.best = std::max(ep.best, value);
    }
    ep.onlyMoves = epCount == count;
    return ep;
}

// `plain` is the value without en passant. Without any legal move it stands as it is.
static i32 wdlWithEp(i32 plain, const EpCaptures& ep) {
    if (ep.best == noValue) {
        return plain;
    }
    if (ep.best >= plain) {
        return ep.best;
    }
    if (plain != 0) {
        return plain;
    }
    return ep.onlyMoves ? ep.best : 0;
}

i32 probeWdl(i32& success) {
    success = 1;
    const i32 plain = probeCaptures(-2, 2, success);
    if (success == 0) {
        return 0;
    }
    if (board->epFile == noEpFile) {
        return plain;
    }
    const EpCaptures ep = probeEpCaptures(success);
    return success == 0 ? 0 : wdlWithEp(plain, ep);
}

// ---- distance -------------------------------------------------------------------------------------------------

static i32 probeDtzWithin(bool mayStep, i32& success);

// A move that resets the count of the fifty-move rule decides: the distance is the shortest of its kind.
static i32 zeroingDtz(i32 wdl) {
    return wdl == 2 ? 1 : 101;
}

// Deliberate: a double step counts as one that cannot be taken en passant.
static bool pawnMoveKeepsWin(i32 wdl, i32& success) {
    MoveList pushes;
    genPawnQuiets(pushes);
    for (i32 i = 0; i < pushes.count; ++i) {
        if (!makeLegal(pushes.entries[i].move)) {
            continue;
        }
        const i32 reply = probeCaptures(-2, 1 - wdl, success);
        --board;
        if (success == 0) {
            return false;
        }
        if (wdl == -reply) {
            return true;
        }
    }
    return false;
}

// The winner's distance from those of its quiet moves with pieces.
static i32 winnerDtzByStep(i32& success) {
    i32 best = 65535;
    QuietList quiets;
    genPieceQuiets(quiets);
    for (i32 i = 0; i < quiets.count; ++i) {
        if (!makeLegal(quiets.entries[i])) {
            continue;
        }
        const i32 reply = probeDtzWithin(false, success);
        --board;
        if (success == 0) {
            return 0;
        }
        if (-reply > 0) {
            best = std::min(best, 1 - reply);
        }
    }
    return best;
}

// Pawn moves of a loser: the position stands already made on `board`.
static i32 loserDtzOfPawnMove(i32 wdl, i32& success) {
    if (wdl == -2) {
        return -1;  // deliberate: without a test of legality
    }
    if (leftInCheck() != 0) {
        return -101;
    }
    return probeCaptures(1, 2, success) == 2 ? 0 : -101;
}

static void lowerByLoserMove(Mossa move, i32 wdl, i32& best, i32& success) {
    makeMoveLight(move);
    const bool zeroing = board->rule50 == 0;
    if (!zeroing && leftInCheck() != 0) {
        --board;
        return;
    }
    const i32 dtz = zeroing ? loserDtzOfPawnMove(wdl, success) : -probeDtzWithin(false, success) - 1;
    --board;
    best = std::min(best, dtz);
}

// The loser's distance from those of its quiet moves. Captures are not among them: deliberate, they have been looked
// at and do not save the game.
static i32 loserDtzByStep(i32 wdl, i32& success) {
    i32 best = -1;
    QuietList quiets;
    genQuiets(quiets);
    for (i32 i = 0; i < quiets.count && success != 0; ++i) {
        lowerByLoserMove(quiets.entries[i], wdl, best, success);
    }
    if (success == 0) {
        return 0;
    }
    MoveList pushes;
    genPawnQuiets(pushes);
    for (i32 i = 0; i < pushes.count && success != 0; ++i) {
        lowerByLoserMove(pushes.entries[i].move, wdl, best, success);
    }
    return success == 0 ? 0 : best;
}

// The distance without en passant. A table stores one side to move: for the other one step of search is made.
// mayStep  false within that step: a damaged table that stores neither side is thus found out.
static i32 probeDtzPlain(bool mayStep, i32& success) {
    success = 1;
    const i32 wdl = probeCaptures(-2, 2, success);
    if (wdl == 0 || success == 0) {
        return 0;
    }
    if (success == 2) {
        return zeroingDtz(wdl);
    }
    if (wdl > 0) {
        const bool byPawn = pawnMoveKeepsWin(wdl, success);
        if (success == 0) {
            return 0;
        }
        if (byPawn) {
            return zeroingDtz(wdl);
        }
    }
    const i32 stored = probeDtzTable(wdl, success);
    // Deliberate: when the table fails, its 0 goes the same way, and the distance of a failed probe is 1 or 101.
    if (success >= 0) {
        const i32 dtz = stored + ((wdl & 1) != 0 ? 101 : 1);
        return wdl < 0 ? -dtz : dtz;
    }
    if (!mayStep) {
        success = 0;
        return 0;
    }
    return wdl > 0 ? winnerDtzByStep(success) : loserDtzByStep(wdl, success);
}

// `plain` is the distance without en passant.
static i32 dtzWithEp(i32 plain, const EpCaptures& ep) {
    if (ep.best == noValue) {
        return plain;
    }
    const i32 dtz = wdlToDtz[ep.best + 2];
    if (plain < -100) {
        return dtz >= 0 ? dtz : plain;
    }
    if (plain < 0) {
        return dtz == 0 || dtz == 1 ? dtz : plain;  // deliberate: not 101
    }
    if (plain > 100) {
        return dtz > 0 ? dtz : plain;
    }
    if (plain > 0) {
        return dtz == 1 ? 1 : plain;
    }
    return dtz >= 0 || ep.onlyMoves ? dtz : 0;
}

static i32 probeDtzWithin(bool mayStep, i32& success) {
    const i32 plain = probeDtzPlain(mayStep, success);
    if (board->epFile == noEpFile) {
        return plain;
    }
    if (success == 0) {
        return 0;
    }
    const EpCaptures ep = probeEpCaptures(success);
    return success == 0 ? 0 : dtzWithEp(plain, ep);
}

i32 probeDtz(i32& success) {
    return probeDtzWithin(true, success);
}
