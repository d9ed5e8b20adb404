// Rules of the flow: a move is answered when it is the engine's turn; after its move the engine ponders on the reply it
// expects; an expected move turns the ponder search into the real one by the engine's own rule (safePly).
#include "xboard_play.h"

#include "book_move.h"
#include "comments.h"
#include "frontend/frontend.h"
#include "platform/print.h"
#include "search/search_info.h"
#include "settings.h"
#include "xboard_lines.h"

#include <algorithm>

XboardState session;
Relaxed<i32> postWanted{1};

constexpr i32 firstPonderedMove = 2;  // lowest number of engine moves with pondering

// ---- state ----------------------------------------------------------------------------------------------------

static u8 sideToPlay() {
    return blackToMove(session.game.standing.record) ? blackSide : whiteSide;
}

bool isThinking() {
    return session.busy == Busy::thinking;
}

void payOwed() {
    for (const std::string& line : session.owed) {
        print("%s\n", line.c_str());
    }
    session.owed.clear();
}

// The move that turned pondering into thinking belongs to the game, whatever becomes of the search.
static void recordHit() {
    if (session.hit) {
        (void)playMove(session.game, session.expected, false);
        session.hit = false;
    }
}

void settle(SessionLock& lock) {
    dropSearch(lock);
    recordHit();
    session.held.reset();
    session.busy = Busy::nothing;
    payOwed();
}

void claimEnd() {
    const std::string result = resultLine(session.game, endOf(session.game));
    if (!result.empty()) {
        session.over = true;
        print("%s\n", result.c_str());
    }
}

static bool isPlayable() {
    return session.game.illegalReason.empty() && !session.game.standing.legal.empty();
}

// ---- searches -------------------------------------------------------------------------------------------------

static void finished(const Outcome& outcome);

static void begin(Busy what, i32 ponderSearch, Mossa expected) {
    SearchOrder order;
    order.listener = {printXboardFinding, nullptr, finished};
    order.ponderSearch = ponderSearch;
    order.expected = expected;
    session.busy = what;
    startSearch(order);
}

static void limitDepth() {
    const i32 depth = std::min(settings.maxDepth, session.time.depth.value_or(settings.maxDepth));
    EngineOptions.maxDepth = depth;
    EngineOptions.minDepth = std::min(EngineOptions.minDepth.load(), depth);
}

// The hint is the expected move alone; where it ends the game there is nothing to ponder on.
static bool mayPonderOn(const std::string& move) {
    if (!playMove(session.game, move, false).empty()) {
        return false;
    }
    const bool goesOn = endOf(session.game) == GameEnd::none;
    takeBack(session.game);
    return goesOn;
}

static void ponder(const std::string& reply) {
    if (!session.ponderWanted || session.over || engineMoves(session.game) < firstPonderedMove ||
        reply.empty() || !mayPonderOn(reply)) {
        return;
    }
    session.expected = reply;
    print("Hint: %s\n", reply.c_str());
    applySettings();
    limitDepth();
    allowEndless();
    begin(Busy::pondering, 1, findLegal(session.game.standing, reply)->move);
}

void ponderAgain(const std::string& expected) {
    ponder(expected);
}

void analyseIfWanted() {
    if (!session.analysisWanted || !isPlayable()) {
        return;
    }
    applySettings();
    allowEndless();
    begin(Busy::analysing, 1, 0);
}

// ---- moves of the engine --------------------------------------------------------------------------------------

static void playOwn(const Outcome& outcome) {
    session.busy = Busy::nothing;
    session.hint = outcome.reply;
    (void)playMove(session.game, outcome.best, true);
    print("move %s\n", outcome.best.c_str());
    claimEnd();
    payOwed();
    ponder(outcome.reply);
}

static void finished(const Outcome& outcome) {
    if (session.busy == Busy::pondering) {
        session.held = outcome;
    } else if (session.busy == Busy::thinking) {
        recordHit();
        playOwn(outcome);
    }
}

static bool playedFromBook() {
    const std::string move = bookMove(session.game.standing, engineMoves(session.game));
    if (move.empty()) {
        return false;
    }
    if (postWanted != 0) {
        print("0 0 0 0 (%s from the book)\n", move.c_str());
    }
    playOwn({move, {}, false});
    return true;
}

static void setBudget() {
    if (session.time.millisecondsPerMove) {
        allowMilliseconds(*session.time.millisecondsPerMove);
        return;
    }
    allowByClocks(session.time.clocks, engineMoves(session.game));
}

void moveNow() {
    if (!isPlayable()) {
        claimEnd();
        return;
    }
    applySettings();
    if (playedFromBook()) {
        return;
    }
    limitDepth();
    setBudget();
    begin(Busy::thinking, 0, 0);
}

void moveIfDue() {
    if (!session.over && session.engineSide == sideToPlay()) {
        moveNow();
    }
}

// ---- moves of the opponent ------------------------------------------------------------------------------------

// Deep enough by the engine's rule, the search ends at once; else it has its share of the clock from now on.
static void turnIntoThinking() {
    session.hit = true;
    session.busy = Busy::thinking;
    if (SearchInfo.iterationDepth >= settings.safePly) {
        hurrySearch();
    } else if (session.time.millisecondsPerMove) {
        allotRunningMilliseconds(*session.time.millisecondsPerMove);
    } else {
        storeClocks(session.time.clocks, engineMoves(session.game));
        allotRunningByClocks();
    }
}

static void takeExpectedMove() {
    if (!session.held) {
        turnIntoThinking();
        return;
    }
    const Outcome outcome = *session.held;
    session.held.reset();
    session.hit = true;
    recordHit();
    playOwn(outcome);
}

static void answerMove() {
    if (session.analysisWanted) {
        analyseIfWanted();
    } else if (session.engineSide != neitherSide) {
        claimEnd();
        moveIfDue();
    }
}

void takeMove(std::string_view text, SessionLock& lock) {
    const std::string shown(text.substr(0, longestShownText));
    if (isThinking()) {
        print("Illegal move (it is not your turn): %s\n", shown.c_str());
        return;
    }
    const LegalMove* const legal = findLegal(session.game.standing, text);
    if (legal == nullptr || !session.game.illegalReason.empty()) {
        const std::string& position = session.game.illegalReason;
        const std::string reason = position.empty() ? whyIllegal(session.game.standing, text) : position;
        print("Illegal move (%s): %s\n", reason.c_str(), shown.c_str());
        return;
    }
    session.over = false;
    if (session.busy == Busy::pondering && legal->text == session.expected) {
        takeExpectedMove();
        return;
    }
    const std::string move = legal->text;
    settle(lock);
    const std::string fault = playMove(session.game, move, false);
    if (!fault.empty()) {
        print("Illegal move (%s): %s\n", fault.c_str(), shown.c_str());
    }
    session.hint.clear();
    answerMove();
}
