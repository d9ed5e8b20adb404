// One thread, one order at a time. What think tells goes straight to the order's listener; what it returns is held to the
// rules before it leaves: a move or a line that a stopped search left half written never gets out.
#include "searcher.h"

#include "comments.h"
#include "frontend/frontend.h"
#include "platform/platform.h"
#include "platform/relaxed.h"
#include "platform/thread.h"
#include "rules.h"
#include "search/search.h"
#include "search/search_watch.h"

#include <algorithm>
#include <condition_variable>

std::mutex sessionMutex;

// ---- state ----------------------------------------------------------------------------------------------------

static std::condition_variable orderGiven;
static std::condition_variable searchEnded;
static Thread thread{};
static bool leaving = false;
static bool orderWaits = false;
static bool running = false;
static bool dropped = false;
static u64 nodesInPlace = 0;  // 0: searches run on the thread
static SearchOrder order;     // changed only while no search runs
static i32 startedMs = 0;

// Of the running search. The search thread writes, others read.
static Relaxed<u64> finishedNodes{0};  // of the attempts that have ended
static Relaxed<u64> countedNodes{0};   // of all, as of the last look at the clock
static Relaxed<u32> moveInHand{0};
static Relaxed<i32> moveNumber{0};
static Relaxed<i32> moveCount{0};
static Relaxed<i32> blackAtRoot{0};

// The search thread's own: the legal moves of the last attempt that ended.
static bool attemptEnded = false;
static std::vector<std::string> lastLine;

// ---- what think tells -----------------------------------------------------------------------------------------

static std::vector<std::string> textsOf(const PvLine& line) {
    std::vector<std::string> texts;
    for (const LegalMove& legal : legalLine(line)) {
        texts.push_back(legal.text);
    }
    return texts;
}

static bool isMateWithin(i32 score, i32 moves) {
    const std::optional<i32> needed = mateMoves(score);
    return moves > 0 && score > 0 && needed && *needed <= moves;
}

static void takeAttempt(const ThinkingAttempt& attempt) {
    attemptEnded = true;
    finishedNodes = attempt.nodesOfThink;
    countedNodes = attempt.nodesOfThink;
    lastLine = textsOf(attempt.line);
    if (order.listener.found != nullptr) {
        order.listener.found({attempt.depth, attempt.score, attempt.end, elapsedMs(startedMs), attempt.nodes,
                              attempt.nodesOfThink, attempt.tableHits, lastLine});
    }
    if (attempt.nodesOfThink >= order.nodes || isMateWithin(attempt.score, order.mateMoves)) {
        EngineOptions.stopSearch = 1;
    }
}

static void takeOnlyMove(const PvLine& line) {
    attemptEnded = true;
    lastLine = textsOf(line);
    const u64 nodes = SearchInfo.nodes;  // of making the list
    if (order.listener.found != nullptr) {
        order.listener.found({0, 0, AttemptEnd::exact, elapsedMs(startedMs), nodes, nodes, 0, lastLine});
    }
}

static void takeRootMove(u32 move, i32 number, i32 count) {
    moveInHand = move;
    moveNumber = number;
    moveCount = count;
    if (order.listener.rootMove != nullptr) {
        order.listener.rootMove(moveTextOf(move, *board), number, count);
    }
}

static void dropMate(i32) {}

static void tellBudget(i32 number, i32 divisor, i32 centiseconds) {
    const CoreSpeaks comments;
    print("moves: %i move speed: %i allocated time: %i\n", number, divisor, centiseconds);
}

static void countNodes() {
    countedNodes = finishedNodes + SearchInfo.nodes;
    if (countedNodes >= order.nodes) {
        EngineOptions.stopSearch = 1;
    }
}

static void keepOrderedMoves(RootList& rootList, i32& rootCount) {
    if (order.only.empty()) {
        return;
    }
    const auto last = std::remove_if(
        rootList.begin(), rootList.begin() + rootCount,
        [](const RootMove& entry) { return std::ranges::find(order.only, entry.move) == order.only.end(); });
    rootCount = static_cast<i32>(last - rootList.begin());
}

// ---- one search -----------------------------------------------------------------------------------------------

static bool isAllowed(Mossa move) {
    return order.only.empty() || std::ranges::find(order.only, move) != order.only.end();
}

// What think returned, if it is a move here; else the one the stopped search held for best; else the first.
static const LegalMove* bestOf(const Standing& standing, Mossa returned) {
    for (const Mossa move : {returned, gs_lineH.argmove[0]}) {
        const LegalMove* const legal = move != 0 ? findLegal(standing, move) : nullptr;
        if (legal != nullptr && isAllowed(legal->move)) {
            return legal;
        }
    }
    const auto first =
        std::ranges::find_if(standing.legal, [](const LegalMove& legal) { return isAllowed(legal.move); });
    return first != standing.legal.end() ? &*first : nullptr;
}

static Outcome search() {
    const Standing standing = standingHere();
    blackAtRoot = blackToMove(*board) ? 1 : 0;
    attemptEnded = false;
    lastLine.clear();
    if (standing.legal.empty()) {
        return {{}, {}, false};
    }
    SearchInfo.nodes = 0;
    const LegalMove* const best = bestOf(standing, think(order.ponderSearch));
    const bool lineGoesOn = lastLine.size() > 1 && lastLine.front() == best->text;
    return {best->text, lineGoesOn ? lastLine[1] : "", attemptEnded};
}

static Outcome runOrder() {
    if (order.expected == 0) {
        return search();
    }
    makeMove(order.expected);
    Outcome outcome = search();
    --board;
    return outcome;
}

static void searchThread(void*) {
    SessionLock lock(sessionMutex);
    for (;;) {
        orderGiven.wait(lock, [] { return orderWaits || leaving; });
        if (leaving) {
            return;
        }
        orderWaits = false;
        running = true;
        lock.unlock();
        const Outcome outcome = runOrder();
        lock.lock();
        running = false;
        if (!dropped) {
            order.listener.finished(outcome);
        }
        searchEnded.notify_all();
    }
}

// ---- for the protocols ----------------------------------------------------------------------------------------

static void listenToSearches() {
    thinkingSink = {takeAttempt, takeOnlyMove, dropMate, dropMate, takeRootMove, tellBudget};
    SearchWatch = {countNodes, keepOrderedMoves};
}

bool startSearchThread() {
    listenToSearches();
    leaving = false;
    return startThread(thread, searchThread, nullptr);
}

void endSearchThread() {
    {
        SessionLock lock(sessionMutex);
        dropSearch(lock);
        leaving = true;
        orderGiven.notify_all();
    }
    joinThread(thread);
}

void searchInPlace(u64 nodes) {
    listenToSearches();
    nodesInPlace = nodes;
}

// The order may be another one when `finished` has been called.
static void runInPlace() {
    order.nodes = std::min(order.nodes, nodesInPlace);
    const auto finished = order.listener.finished;
    finished(runOrder());
}

bool searchRuns() {
    return orderWaits || running;
}

void startSearch(const SearchOrder& given) {
    assert(!searchRuns());
    order = given;
    startedMs = nowMs();
    finishedNodes = 0;
    countedNodes = 0;
    moveInHand = 0;
    moveNumber = 0;
    moveCount = 0;
    SearchInfo.iterationDepth = 0;
    dropped = false;
    if (nodesInPlace != 0) {
        runInPlace();
        return;
    }
    orderWaits = true;
    orderGiven.notify_all();
}

void hurrySearch() {
    if (searchRuns()) {
        EngineOptions.stopSearch = 1;
    }
}

void finishSearch(SessionLock& lock) {
    hurrySearch();
    searchEnded.wait(lock, [] { return !searchRuns(); });
}

void dropSearch(SessionLock& lock) {
    if (!searchRuns()) {
        return;
    }
    dropped = true;
    finishSearch(lock);
}

Progress searchProgress() {
    Scacchiera colour{};
    colour.stateFlags = blackAtRoot != 0 ? blackToMoveFlag : u8{0};
    const Mossa move = moveInHand;
    const i32 left = std::max(0, moveCount - moveNumber);
    return {elapsedMs(startedMs),
            countedNodes,
            SearchInfo.iterationDepth,
            left,
            moveCount,
            move != 0 ? moveTextOf(move, colour) : ""};
}
