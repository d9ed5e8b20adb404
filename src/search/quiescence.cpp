// The search at the horizon: captures and promotions, evasions, and checks on the first two levels, until the
// position is quiet. No hash table, no mate scores.
#include "search/internal.h"

#include "board/board.h"
#include "board/make_move.h"
#include "eval/eval.h"

constexpr i32 lazyMargin = 499;         // centipawns beyond the window at which no evaluation is made
constexpr i32 wholeBoardMargin = 1000;  // more than any capture brings
constexpr i32 captureMargin = 50;       // what a capture may bring beyond its exchange value
constexpr i32 deltaTestMen = 4;         // with so few men of the side to move every capture counts
constexpr i32 lastCheckLevel = -1;      // qDepth of the last level that tries quiet checks

static i16 settle(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen, TBB checkers);

i16 quiescenceGuard(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen, TBB checkers) {
    if (drawnByRule(checkers)) {
        return 0;
    }
    if (mustStop()) {
        return stoppedScore;
    }
    if (board >= searchCeiling) {
        return evaluate();
    }
    return settle(qDepth, alpha, beta, mateScore, tbMen, checkers);
}

i16 quiescenceGuard(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen) {
    return quiescenceGuard(qDepth, alpha, beta, mateScore, tbMen, inCheck());
}

namespace {

// What the steps of a node share. `best` is the running lower bound.
struct QuietNode {
    i16 qDepth;
    i16 beta;
    i16 mateScore;
    i16 tbMen;
    i16 standPat;
    i16 best;
    TBB inCheckNow;
    NodeMoves moves;
};

}  // namespace

// Plays one move, unless it is illegal. True if it cuts off.
static bool moveCutsOff(QuietNode& node, Mossa move) {
    if (!tryMove(node.moves, move)) {
        return false;
    }
    const i16 score = wrap16(-quiescenceGuard(wrap16(node.qDepth - 1), wrap16(-node.beta), wrap16(-node.best),
                                              wrap16(node.mateScore - 1), node.tbMen));
    --board;
    if (score > node.best) {
        if (score >= node.beta) {
            return true;
        }
        node.best = score;
    }
    return false;
}

static bool quietEvasionCutsOff(QuietNode& node, const QuietList& quiets) {
    for (i32 i = quiets.count - 1; i >= 0; --i) {
        if (moveCutsOff(node, quiets.entries[i])) {
            return true;
        }
    }
    return false;
}

static bool isPromotion(Mossa move) {
    return (moveKind(move) & ~8) == PROMO;
}

// Deliberate: not at the first level, but in check as well.
static bool deltaTestMayRun(const QuietNode& node, Mossa move) {
    return node.qDepth < 0 && popCount(board->side) > deltaTestMen && !isPromotion(move);
}

static bool cannotReachBest(const QuietNode& node, Mossa move) {
    return deltaTestMayRun(node, move) && see(move) + node.standPat + captureMargin < node.best;
}

static bool captureCutsOff(QuietNode& node, MoveList& captures) {
    while (captures.count > 0) {
        const Mossa move = pickBest(captures);
        --captures.count;
        if (cannotReachBest(node, move) || (node.inCheckNow == 0 && seeIsLosing(move) != 0)) {
            continue;
        }
        if (moveCutsOff(node, move)) {
            return true;
        }
    }
    return false;
}

// Not inlined, here and below, so that a list takes room on the machine stack only while its moves are searched.
[[gnu::noinline]] static bool captureStageCutsOff(QuietNode& node) {
    MoveList captures;
    genCaptures(captures);
    return captureCutsOff(node, captures);
}

[[gnu::noinline]] static bool evasionCutsOff(QuietNode& node) {
    MoveList captures;
    QuietList quiets;
    genEvasions(node.inCheckNow, captures, quiets);
    return quietEvasionCutsOff(node, quiets) || captureCutsOff(node, captures);
}

[[gnu::noinline]] static bool checkCutsOff(QuietNode& node) {
    QuietList checks;
    genChecks(checks);
    for (i32 i = checks.count - 1; i >= 0; --i) {
        const Mossa move = checks.entries[i];
        if (seeIsLosing(move) == 0 && moveCutsOff(node, move)) {
            return true;
        }
    }
    return false;
}

static i16 settle(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen, TBB checkers) {
    assert(boardIsRecord() && qDepth <= 0 && checkers == inCheck());
    QuietNode node;
    node.qDepth = qDepth;
    node.beta = beta;
    node.mateScore = mateScore;
    node.tbMen = tbMen;
    node.inCheckNow = checkers;
    const i16 balance = board->psqScore;
    if (node.inCheckNow == 0 && (balance > beta + lazyMargin || balance < alpha - lazyMargin)) {
        return balance;
    }
    node.standPat = evaluate();
    if (node.inCheckNow == 0) {
        if (node.standPat >= beta) {
            return beta;
        }
        if (node.standPat + wholeBoardMargin < alpha) {
            return alpha;
        }
    }
    // Deliberate: the side in check may stand pat too. So a mate gives no mate score here.
    node.best = alpha > node.standPat ? alpha : node.standPat;
    node.moves = nodeMoves(node.inCheckNow);
    if (node.inCheckNow != 0 ? evasionCutsOff(node) : captureStageCutsOff(node)) {
        return beta;
    }
    if (qDepth >= lastCheckLevel && checkCutsOff(node)) {
        return beta;
    }
    return node.best;
}

i16 quiescence(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen) {
    return settle(qDepth, alpha, beta, mateScore, tbMen, inCheck());
}
