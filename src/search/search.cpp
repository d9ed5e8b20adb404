// The recursive search: fail-hard alpha-beta with the full window at every node. `searchNode` lists the decisions of
// a node in their order, each is a function above it. Mate distance travels as an argument, and the bound of the hash
// slot, be it another position's, decides which pruning may run.
#include "search/internal.h"

#include "board/board.h"
#include "board/make_move.h"
#include "board/node_checks.h"
#include "eval/eval.h"
#include "frontend/frontend.h"
#include "hash/hash.h"
#include "tablebase/tablebase.h"

namespace {

// The locals of a node. Never cleared as a whole: enterNode sets what a node starts with.
struct SearchNode {
    i16 depth;
    i16 ply;
    i16 alpha;
    i16 beta;
    i16 mateScore;
    i16 tbMen;
    i32 allowNull;
    i32 extendedLine;
    PvLine* pv;
    i32 men;         // on the board, both colours
    TBB inCheckNow;  // the men that give check
    ys_hash slot;    // as probed; internal deepening may fill in the move
    i32 hashState;   // HASH_NO_CUT or HASH_MISS
    i32 ext;         // plies by which the node's moves are extended
    bool futile;     // the balance is too low for quiet moves without check
    bool noMoveYet;
    bool failLow;  // alpha not raised yet
    Mossa bestMove;
    std::array<Mossa, 2> absentKillers;  // known not to be in the quiet list
    NodeMoves moves;                     // what the making of the node's moves shares
    PvLine childLine;  // cleared once: a child that writes no line leaves its elder sibling's
};

}  // namespace

constinit u64 tableHits = 0;
constinit const Scacchiera* searchCeiling = &boardStack[gameRecordsMax + searchRecordsMax];

// ---- ahead of the moves ---------------------------------------------------------------------------------------

// A shorter mate is known already: the window shrinks to what is still possible here. True if nothing is left of it.
static bool mateDistanceCloses(SearchNode& node) {
    if (node.alpha < -node.mateScore) {
        node.alpha = wrap16(-node.mateScore);
    }
    if (node.beta > node.mateScore) {
        node.beta = node.mateScore;
    }
    return node.alpha >= node.beta;
}

static i16 tablebaseScore(i32 wdl) {
    if (wdl < -1) {
        return -TB_WIN;
    }
    return wdl > 1 ? TB_WIN : 0;  // the fifty-move rule makes draws of the middle values
}

// True if the tables know the position; `value` is then its score, and stored.
static bool tablebasesKnow(const SearchNode& node, i16& value) {
    if (EngineOptions.syzygy == 0 || node.men > node.tbMen) {
        return false;
    }
    i32 success = 0;
    const i32 wdl = probeWdl(success);
    if (success == 0) {
        return false;
    }
    ++tableHits;
    value = tablebaseScore(wdl);
    // Deliberate: the slot's move as it stands, another position's too.
    hashStore(node.depth, value, HASH_EXACT, node.slot.move);
    return true;
}

static bool isShallow(const SearchNode& node) {
    return node.depth >= 1 && node.depth <= 3;
}

// Centipawns that a quiet move may win at depths 1 to 3: more as men leave the board. Single precision, truncated.
static i32 futilityMargin(i32 depth, i32 men) {
    assert(men > 0);  // a move has led here
    constexpr std::array<float, 4> marginAt18Men = {0.0F, 500.0F, 890.0F, 1600.0F};
    return static_cast<i32>(18.0F / static_cast<float>(men) * marginAt18Men[depth]);
}

// The balance lies so far below alpha that quiet moves without check are not worth trying. An empty slot and an exact
// one, of any position, keep all moves in.
static bool isFutile(const SearchNode& node) {
    return isShallow(node) && node.inCheckNow == 0 && node.slot.bound != HASH_EXACT &&
           node.extendedLine == 0 && board->psqScore <= node.alpha - futilityMargin(node.depth, node.men);
}

// True if the static value stays above beta after a deduction for each ply of depth; `value` is then the score, which
// is not cut to the window.
static bool staticCutOff(const SearchNode& node, i16& value) {
    constexpr i32 deductionPerPly = 70;  // centipawns
    constexpr i32 betaLimit = 19500;     // beyond it only mates matter
    if (!isShallow(node) || node.inCheckNow != 0 || node.beta < -betaLimit || node.beta > betaLimit) {
        return false;
    }
    value = wrap16(evaluate() - deductionPerPly * node.depth);
    return value >= node.beta;
}

// A pass proves something only where some move is surely better than passing, so bare pawn endings are out.
// An empty slot reads as HASH_EXACT: a first visit never passes.
static bool nullMoveMayRun(const SearchNode& node) {
    return node.allowNull != 0 && node.depth > 3 && node.inCheckNow == 0 && node.slot.bound != HASH_EXACT &&
           occupied(*board) != (pawns(*board) | kings(*board));
}

// Not inlined, so that its line takes no room in the frames of other nodes.
[[gnu::noinline]] static bool nullMoveHolds(const SearchNode& node) {
    constexpr i32 reduction = 4;  // plies, the pass included
    PvLine nullLine;
    makeNullMove();
    const i16 score =
        wrap16(-search(wrap16(node.depth - reduction), wrap16(node.ply + 1), wrap16(-node.beta),
                       wrap16(1 - node.beta), nullLine, node.mateScore, 0, node.extendedLine, node.tbMen));
    --board;
    return score >= node.beta;
}

static bool internalDeepeningMayRun(const SearchNode& node) {
    return node.depth > 5 && node.slot.bound != HASH_UPPER && node.allowNull == 0 && node.slot.move == 0;
}

// Finds a first move by a search of half the depth. Deliberate: it counts plies from 0 again. Not inlined, as
// nullMoveHolds.
[[gnu::noinline]] static void deepenInternally(SearchNode& node) {
    const i16 depth = wrap16(node.depth >> 1);
    PvLine iidLine;
    iidLine.count = 0;
    iidLine.argmove[0] = 0;
    const i16 score = search(depth, 0, node.alpha, node.beta, iidLine, node.mateScore, 1, 0, node.tbMen);
    if (node.alpha >= score) {
        search(depth, 0, -INFINITE, node.beta, iidLine, node.mateScore, 1, 0, node.tbMen);
    }
    if (iidLine.count > 0) {
        node.slot.move = iidLine.argmove[0];
        node.hashState = HASH_NO_CUT;
    }
}

// ---- moves ----------------------------------------------------------------------------------------------------

// Makes the move unless it is illegal, and begins to fetch the new position's slot.
static bool madeMove(const SearchNode& node, Mossa move) {
    if (!tryMove(node.moves, move)) {
        return false;
    }
    hashPrefetch(board->hashKey);
    return true;
}

static i16 searchChild(SearchNode& node, i32 reduction, i32 allowNull, TBB checkers) {
    return wrap16(-searchNode(wrap16(node.depth + node.ext - 1 - reduction), wrap16(node.ply + 1),
                              wrap16(-node.beta), wrap16(-node.alpha), node.childLine,
                              wrap16(node.mateScore - 1), allowNull, node.extendedLine, node.tbMen,
                              checkers));
}

// Takes a score inside the window.
static void raiseAlpha(SearchNode& node, Mossa move, i16 score) {
    node.bestMove = move;
    node.alpha = score;
    node.failLow = false;
    copyLine(*node.pv, move, node.childLine);
}

static bool hasHashMove(const SearchNode& node) {
    return node.hashState == HASH_NO_CUT && node.slot.move != 0;
}

// Deliberate: a cut-off by the hash move stores nothing and enters neither killers nor history.
static bool hashMoveCutsOff(SearchNode& node) {
    const Mossa move = node.slot.move;
    if (!isPseudoLegal(move)) {
        return false;
    }
    if (!madeMove(node, move)) {
        return false;
    }
    const i16 score = searchChild(node, 0, 0, inCheck());
    --board;
    node.noMoveYet = false;
    if (score <= node.alpha) {
        return false;
    }
    if (score >= node.beta) {
        return true;
    }
    raiseAlpha(node, move, score);
    return false;
}

static bool captureCutsOff(SearchNode& node, MoveList& captures) {
    if (hasHashMove(node)) {
        dropFromCaptures(node.slot.move, captures);
    }
    while (captures.count > 0) {
        const Mossa move = pickBest(captures);
        --captures.count;
        if (!madeMove(node, move)) {
            continue;
        }
        const i16 score = searchChild(node, 0, 1, inCheck());
        --board;
        node.noMoveYet = false;
        if (score > node.alpha) {
            if (score >= node.beta) {
                hashStore(node.depth, score, HASH_LOWER, move);
                return true;
            }
            raiseAlpha(node, move, score);
        }
    }
    return false;
}

// `c` of historyTable for the position at `board`.
static i32 historyHalf() {
    return blackToMove(*board) ? 1 : 0;
}

static i32& historyOf(i32 half, Mossa move) {
    return historyTable[half][moveFrom(move)][moveTo(move)];
}

// Brings the next quiet move to the end of the list and returns it. The list only shrinks, so killers that were not in
// it need not be looked for again.
static Mossa takeQuiet(SearchNode& node, QuietList& quiets) {
    const auto& wanted = killers[node.ply];
    if (wanted == node.absentKillers || killerToEnd(node.ply, quiets) == 0) {
        node.absentKillers = wanted;
        historyToEnd(quiets);
    }
    return quiets.entries[quiets.count - 1];
}

static bool isLateQuiet(const SearchNode& node, i32 tried, bool givesCheck) {
    return !givesCheck && node.ext == 0 && node.depth > 2 && tried > 3;
}

// Plies by which a late quiet move, just made, is reduced. Deliberate: the history is read from the half of the side
// now to move, the mover's opponent, though it is written to the mover's.
static i32 lateReduction(const SearchNode& node, Mossa move) {
    if (node.depth == 3) {
        return 2;
    }
    const i64 fewCutOffs = i64{10} * node.depth * node.depth;
    return historyOf(historyHalf(), move) < fewCutOffs ? 3 : 2;
}

// Searches a quiet move that has been made; a reduced one that beats alpha once more in full.
static i16 searchQuiet(SearchNode& node, Mossa move, i32 tried, TBB checkers) {
    if (isLateQuiet(node, tried, checkers != 0)) {
        const i32 reduction = lateReduction(node, move);
        const i16 score = searchChild(node, reduction, 0, checkers);
        if (score <= node.alpha) {
            return score;
        }
    }
    return searchChild(node, 0, 1, checkers);
}

static void rewardQuiet(const SearchNode& node, Mossa move) {
    i32& history = historyOf(historyHalf(), move);
    history = static_cast<i32>(static_cast<u32>(history) + static_cast<u32>(node.depth * node.depth));
    saveKiller(node.ply, move);
}

static bool quietMoveCutsOff(SearchNode& node, QuietList& quiets) {
    if (hasHashMove(node)) {
        dropFromQuiets(node.slot.move, quiets);
    }
    const CheckSets checks = checkSets(node.moves);
    const bool prune = node.futile && node.ext == 0;
    i32 tried = 0;
    for (; quiets.count > 0; --quiets.count) {
        const Mossa move = takeQuiet(node, quiets);
        // Most often the next move of the list: its slot comes while this one is searched.
        if (quiets.count > 1) {
            hashPrefetch(keyAfter(node.moves, quiets.entries[quiets.count - 2]));
        }
        const bool mayCheck = mayGiveCheck(checks, move);
        if (prune && !mayCheck) {
            ++SearchInfo.nodes;  // it counts as made
            continue;
        }
        if (!madeMove(node, move)) {
            continue;
        }
        const TBB checkers = mayCheck ? inCheck() : 0;
        if (prune && checkers == 0) {
            --board;
            continue;
        }
        ++tried;
        const i16 score = searchQuiet(node, move, tried, checkers);
        --board;
        node.noMoveYet = false;
        if (score > node.alpha) {
            if (score >= node.beta) {
                rewardQuiet(node, move);
                hashStore(node.depth, score, HASH_LOWER, move);
                return true;
            }
            raiseAlpha(node, move, score);
        }
    }
    return false;
}

// Captures first: a cut-off by one of them spares the generation of the others. Not inlined, here and below, so that
// a list takes room on the machine stack only while its moves are searched.
[[gnu::noinline]] static bool captureStageCutsOff(SearchNode& node) {
    MoveList captures;
    genCaptures(captures);
    return captureCutsOff(node, captures);
}

[[gnu::noinline]] static bool quietStageCutsOff(SearchNode& node) {
    QuietList quiets;
    genQuiets(quiets);
    return quietMoveCutsOff(node, quiets);
}

// In check all evasions at once; a single one extends the node, even if it is the hash move searched already.
[[gnu::noinline]] static bool evasionCutsOff(SearchNode& node) {
    MoveList captures;
    QuietList quiets;
    genEvasions(node.inCheckNow, captures, quiets);
    if (captures.count + quiets.count == 1) {
        node.ext = 2;
        node.extendedLine = 1;
    }
    return captureCutsOff(node, captures) || quietMoveCutsOff(node, quiets);
}

static bool moveCutsOff(SearchNode& node) {
    return node.inCheckNow != 0 ? evasionCutsOff(node) : captureStageCutsOff(node) || quietStageCutsOff(node);
}

// Deliberate: a node all of whose moves were pruned is taken for a stalemate.
static i16 closeNode(const SearchNode& node) {
    if (node.noMoveYet && node.inCheckNow != 0) {
        return wrap16(-node.mateScore);
    }
    const i16 value = node.noMoveYet ? i16{0} : node.alpha;
    hashStore(node.depth, value, node.failLow ? HASH_UPPER : HASH_EXACT, node.bestMove);
    return value;
}

// ---- the node -------------------------------------------------------------------------------------------------

static void enterNode(SearchNode& node, TBB checkers) {
    node.men = popCount(occupied(*board));
    node.inCheckNow = checkers;
    node.ext = 0;
    node.futile = false;
    node.noMoveYet = true;
    node.failLow = true;
    node.bestMove = 0;
    node.absentKillers = {};
}

i16 searchNode(i16 depth, i16 ply, i16 alpha, i16 beta, PvLine& pv, i16 mateScore, i32 allowNull,
               i32 extendedLine, i16 tbMen, TBB checkers) {
    assert(boardIsRecord() && depth >= 0 && ply >= 0 && alpha < beta && checkers == inCheck());
    if (drawnByRule(checkers)) {
        return 0;
    }
    if (ply >= plyLimit || board >= searchCeiling) {
        return quiescenceGuard(0, alpha, beta, mateScore, tbMen, checkers);
    }
    SearchNode node;
    node.depth = depth;
    node.ply = ply;
    node.alpha = alpha;
    node.beta = beta;
    node.mateScore = mateScore;
    node.tbMen = tbMen;
    node.allowNull = allowNull;
    node.extendedLine = extendedLine;
    node.pv = &pv;
    enterNode(node, checkers);

    if (mateDistanceCloses(node)) {
        return node.alpha;
    }
    node.hashState = hashProbe(node.slot, depth, node.alpha, node.beta);
    if (node.hashState != HASH_NO_CUT && node.hashState != HASH_MISS) {
        return wrap16(node.hashState);
    }
    if (mustStop()) {
        return stoppedScore;
    }
    i16 value = 0;
    if (tablebasesKnow(node, value)) {
        return value;
    }
    if (depth == 0) {
        EngineOptions.kingDanger = 0;
        value = quiescenceGuard(0, node.alpha, node.beta, mateScore, tbMen, checkers);
        if (node.inCheckNow == 0 || EngineOptions.kingDanger == 0) {
            return value;
        }
        // A check to a king in danger: one more ply instead of the value.
        node.ext = 1;
        node.extendedLine = 1;
    } else {
        node.futile = isFutile(node);
        if (staticCutOff(node, value)) {
            return value;
        }
        if (nullMoveMayRun(node) && nullMoveHolds(node)) {
            return node.beta;
        }
        if (internalDeepeningMayRun(node)) {
            deepenInternally(node);
        }
    }
    node.childLine = {};
    node.moves = nodeMoves(node.inCheckNow);
    if (hasHashMove(node) && hashMoveCutsOff(node)) {
        return node.beta;
    }
    if (moveCutsOff(node)) {
        return node.beta;
    }
    return closeNode(node);
}

i16 search(i16 depth, i16 ply, i16 alpha, i16 beta, PvLine& pv, i16 mateScore, i32 allowNull,
           i32 extendedLine, i16 tbMen) {
    return searchNode(depth, ply, alpha, beta, pv, mateScore, allowNull, extendedLine, tbMen, inCheck());
}
