// The engine's think, told what to search by globals and listened to through its sink. Tables are emptied before each
// search: think does so with the positions' table and the history, the pawn hash is emptied here.
#include "analysis.h"

#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "frontend/thinking_output.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "rules.h"
#include "san.h"
#include "search/search.h"
#include "search/search_watch.h"

#include <algorithm>
#include <limits>

constexpr i32 endless = std::numeric_limits<i32>::max();
constexpr i32 pawnHashMegabytes = 4;
constexpr i32 fiftyMovePlies = 100;

// ---- the running search ---------------------------------------------------------------------------------------

namespace {

struct Running {
    Limits limits{};
    bool (*stillWanted)() = nullptr;
    u64 finishedNodes = 0;     // of attempts that have ended
    bool attemptRuns = false;  // whether SearchInfo.nodes is not among them
    i32 depth = 0;             // of the last exact attempt; 0: there is none
    i32 score = 0;
    PvLine line{};
    i32 forcedPlies = 0;  // made before the search
    std::vector<Choice> choices;
};

}  // namespace

static Running running;

static u64 nodesSoFar() {
    return running.finishedNodes + (running.attemptRuns ? SearchInfo.nodes : 0);
}

static bool nodesAreUsedUp() {
    return running.limits.nodes != 0 && nodesSoFar() >= running.limits.nodes;
}

static void noteChoice(i32 depth, i32 milliseconds, const std::string& move) {
    if (running.choices.empty() || running.choices.back().move != move) {
        running.choices.push_back({depth, milliseconds, move});
    }
}

// A score at the edge of its window is no answer yet: the depth is searched again.
static void takeAttempt(const ThinkingAttempt& attempt) {
    running.finishedNodes = attempt.nodesOfThink;
    running.attemptRuns = false;
    if (attempt.end == AttemptEnd::exact) {
        running.depth = attempt.depth;
        running.score = attempt.score;
        running.line = attempt.line;
        if (running.forcedPlies == 0) {
            noteChoice(attempt.depth, attempt.milliseconds, moveTextOf(attempt.line.argmove[0], *board));
        }
    }
    if (nodesAreUsedUp()) {
        EngineOptions.stopSearch = 1;
    }
}

static void takeOnlyMove(const PvLine&) {}

static void takeMate(i32) {}

static void takeRootMove(u32, i32, i32) {
    running.attemptRuns = true;
}

static void takeBudget(i32, i32, i32) {}

static void lookUp() {
    if (nodesAreUsedUp() || !running.stillWanted()) {
        EngineOptions.stopSearch = 1;
    }
}

// ---- set up ---------------------------------------------------------------------------------------------------

i32 mateDistance(i32 score) {
    const i32 moves = mateMoves(score).value_or(0);
    return score > 0 ? moves : -moves;
}

bool setUpAnalysis(i32 hashMegabytes) {
    setLinePrefix(nullptr);
    thinkingSink = {takeAttempt, takeOnlyMove, takeMate, takeMate, takeRootMove, takeBudget};
    SearchWatch = {lookUp, nullptr};
    EngineOptions.syzygy = 0;
    EngineOptions.minDepth = 1;
    EngineOptions.kingDanger = 0;
    EngineOptions.pawnHashSize = pawnHashMegabytes;
    EngineOptions.pawnHashEntries = (u64{pawnHashMegabytes} << 20) / sizeof(hashPawn);
    pawnHashAlloc();
    resizeHashTable(hashMegabytes);
    return EngineOptions.hashEntries == hashEntriesFor(hashMegabytes);
}

static bool setUpPosition(const Position& position) {
    std::ranges::fill(boardStack, Scacchiera{});
    newGame();
    if (fenToBoard(position.fen.c_str()) == 0 || position.moves.size() >= gameRecordsMax) {
        return false;
    }
    for (const Mossa move : position.moves) {
        makeMove(move);
    }
    pawnHashClear();
    return true;
}

// The search stops when more than this has passed, so one less than the whole stops it in time.
static i32 lastCentisecond(i64 milliseconds) {
    constexpr i64 longest = 1'000'000'000;
    return milliseconds == 0 ? endless : static_cast<i32>(std::clamp(milliseconds / 10 - 1, i64{0}, longest));
}

// ---- forced moves ---------------------------------------------------------------------------------------------

static bool isDrawn() {
    return repetitionCount(*board) > 0 || board->rule50 >= fiftyMovePlies;
}

// Plays as long as there is just one legal move and no draw. Ends, for a capture or a pawn's move comes only so often;
// `room` is kept on the stack for the search. Returns how many moves are legal at the end.
static i32 playForcedMoves(std::vector<Mossa>& forced) {
    const Scacchiera* const highest = boardStack.data() + gameRecordsMax;
    for (;;) {
        MoveArray moves;
        i32 count = 0;
        legalMoves(moves, count);
        if (count != 1 || (!forced.empty() && isDrawn()) || board >= highest) {
            return count;
        }
        forced.push_back(moves[0]);
        makeMove(moves[0]);
    }
}

// A score as it is so many plies earlier.
static i32 scoreBefore(i32 score, i32 plies) {
    if (score >= lowestMateScore) {
        score -= plies;
    } else if (score <= -lowestMateScore) {
        score += plies;
    }
    return plies % 2 == 0 ? score : -score;
}

// ---- one position ---------------------------------------------------------------------------------------------

static void search() {
    const i32 depth = running.limits.depth == 0 ? deepestDepth : running.limits.depth;
    EngineOptions.maxDepth = std::max(1, depth - running.forcedPlies);
    EngineOptions.stopSearch = 0;
    SearchInfo.nodes = 0;
    TimeControl.moveTime = lastCentisecond(running.limits.milliseconds);
    TimeControl.allocatedTime = endless;
    EngineOptions.searchStartMs = nowMs();
    think(0);
}

static Analysis standingStill() {
    const bool mate = inCheck() != 0;
    return {{}, mate ? Standstill::checkmate : Standstill::stalemate, 0, mate ? -mateScore : 0, 0, 0, {}, {}};
}

// The score at the end of the forced moves.
static bool scoreHere(i32 legalCount) {
    if (legalCount == 0) {
        running.score = inCheck() != 0 ? -mateScore : 0;
        return true;
    }
    if (running.forcedPlies > 0 && isDrawn()) {
        running.score = 0;
        return true;
    }
    search();
    return running.depth > 0;
}

static std::vector<std::string> wholeLine(Scacchiera* root, std::vector<Mossa> moves) {
    for (const LegalMove& legal : legalLine(running.line)) {
        moves.push_back(legal.move);
    }
    board = root;
    return sanLine(moves);
}

Analysis analysePosition(const Position& position, const Limits& limits, bool (*stillWanted)()) {
    if (!setUpPosition(position)) {
        return {"the position cannot be set up", Standstill::none, 0, 0, 0, 0, {}, {}};
    }
    Scacchiera* const root = board;
    running = {};
    running.limits = limits;
    running.stillWanted = stillWanted;
    const i32 started = nowMs();
    std::vector<Mossa> forced;
    const i32 legalCount = playForcedMoves(forced);
    if (legalCount == 0 && forced.empty()) {
        return standingStill();
    }
    running.forcedPlies = static_cast<i32>(forced.size());
    if (!forced.empty()) {
        noteChoice(1, 0, moveTextOf(forced.front(), *root));
    }
    if (!scoreHere(legalCount)) {
        return {"the limits leave no time for depth 1", Standstill::none, 0, 0, 0, 0, {}, {}};
    }
    Analysis result{{},
                    Standstill::none,
                    running.depth + running.forcedPlies,
                    scoreBefore(running.score, running.forcedPlies),
                    nodesSoFar() + forced.size(),
                    elapsedMs(started),
                    {},
                    running.choices};
    result.line = wholeLine(root, forced);
    return result;
}
