// The commands of UCI and the state between them. A search that is not to answer by itself ("infinite", "ponder") keeps
// its outcome until "stop" or "ponderhit" asks for it, so that each "go" gets one "bestmove" and no more.
#include "uci.h"

#include "book_move.h"
#include "budget.h"
#include "comments.h"
#include "fen_reader.h"
#include "frontend/frontend.h"
#include "game.h"
#include "hash/hash.h"
#include "platform/print.h"
#include "search/search_info.h"
#include "settings.h"
#include "uci_go.h"
#include "uci_info.h"
#include "words.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace {

enum class Answer : u8 { byItself, whenStopped, whenPonderHitOrStopped };

struct UciState {
    Game game;
    GoLimits limits;  // of the last "go"
    Answer answer = Answer::byItself;
    std::optional<Outcome> held{};  // found, and waiting for "stop" or "ponderhit"
    bool debug = false;
};

}  // namespace

static UciState state;

static void tell(const std::string& text) {
    print("info string %s\n", text.c_str());
}

// ---- answers --------------------------------------------------------------------------------------------------

static void printBestMove(const Outcome& outcome) {
    const std::string ponder = outcome.reply.empty() ? "" : " ponder " + outcome.reply;
    print("bestmove %s%s\n", outcome.best.empty() ? "(none)" : outcome.best.c_str(), ponder.c_str());
}

static void finished(const Outcome& outcome) {
    if (state.answer == Answer::byItself) {
        printBestMove(outcome);
    } else {
        state.held = outcome;
    }
}

// From now on the search's answer goes out as soon as it is there.
static void releaseAnswer() {
    state.answer = Answer::byItself;
    if (state.held) {
        printBestMove(*state.held);
        state.held.reset();
    }
}

// Every "go" is answered before its position goes or another begins.
static void answerNow(SessionLock& lock) {
    releaseAnswer();
    finishSearch(lock);
}

// ---- session --------------------------------------------------------------------------------------------------

static void introduce(std::string_view, SessionLock&) {
    print("id name tarvelmon 0.12\nid author Ubaldo Merikossa\n%suciok\n",
          describeOptions(Side::uci).c_str());
}

static void answerReady(std::string_view, SessionLock&) {
    // The tables are made where waiting is asked for, and not before "uciok".
    if (!searchRuns()) {
        applySettings();
    }
    print("readyok\n");
}

static void setDebug(std::string_view words, SessionLock&) {
    state.debug = words.starts_with("on");
    commentPrefix = state.debug ? "info string " : nullptr;
}

// "name" and "value" begin texts of several words.
static void takeOption(std::string_view words, SessionLock&) {
    constexpr std::string_view nameWord = "name ";
    constexpr std::string_view valueWord = " value";
    if (!words.starts_with(nameWord)) {
        return;
    }
    words.remove_prefix(nameWord.size());
    const std::size_t at = words.find(valueWord);
    const std::string_view value = at == std::string_view::npos ? "" : words.substr(at + valueWord.size());
    const std::string fault =
        setOption(Side::uci, Words{words.substr(0, at)}.remainder(), Words{value}.remainder());
    if (!fault.empty()) {
        tell(fault);
    }
}

// ---- positions ------------------------------------------------------------------------------------------------

static void takeNewGame(std::string_view, SessionLock& lock) {
    answerNow(lock);
    startGame(state.game);
    wantEmptyTables();
}

static void playListedMoves(Words words) {
    for (std::string_view move = words.next(); !move.empty(); move = words.next()) {
        const std::string fault = playMove(state.game, move, false);
        if (!fault.empty()) {
            tell("illegal move " + std::string(move.substr(0, 10)) + ": " + fault +
                 "; the moves before it stand");
            return;
        }
    }
}

static void takePosition(std::string_view text, SessionLock& lock) {
    answerNow(lock);
    constexpr std::string_view movesWord = "moves";
    const std::size_t at = text.find(movesWord);
    Words setUp{text.substr(0, at)};
    const std::string_view kind = setUp.next();
    if (kind == "startpos") {
        startGame(state.game);
    } else {
        const std::string fault = kind == "fen" ? setUpGame(state.game, setUp.remainder()) : "no position";
        if (!fault.empty()) {
            tell("position refused: " + fault);
            return;
        }
    }
    if (at != std::string_view::npos) {
        playListedMoves(Words{text.substr(at + movesWord.size())});
    }
}

// ---- searching ------------------------------------------------------------------------------------------------

static i32 ownMoves() {
    return static_cast<i32>(state.game.plies.size() / 2);
}

// The overhead goes off both clocks: which side has more time is part of the allocation.
static Clocks clocksOf(const GoLimits& limits) {
    const bool black = blackToMove(state.game.standing.record);
    const i64 white = limits.whiteTime.value_or(0) - settings.moveOverheadMs;
    const i64 blackTime = limits.blackTime.value_or(0) - settings.moveOverheadMs;
    return {centisecondsOf(black ? blackTime : white), centisecondsOf(black ? white : blackTime),
            centisecondsOf(black ? limits.blackIncrement : limits.whiteIncrement),
            static_cast<i32>(std::clamp(limits.movesToGo, i64{0}, i64{1000}))};
}

static void setBudget(const GoLimits& limits) {
    if (limits.ponder || limits.infinite) {
        allowEndless();
        storeClocks(clocksOf(limits), ownMoves());
    } else if (limits.moveTime) {
        allowMilliseconds(*limits.moveTime);
    } else if (hasClock(limits)) {
        allowByClocks(clocksOf(limits), ownMoves());
    } else {
        allowEndless();
    }
}

static void limitDepth(const GoLimits& limits) {
    const i64 depth = limits.depth.value_or(settings.maxDepth);
    EngineOptions.maxDepth = static_cast<i32>(std::clamp(depth, i64{1}, i64{64}));
    EngineOptions.minDepth = std::min(EngineOptions.minDepth.load(), EngineOptions.maxDepth);
}

static SearchOrder orderOf(const GoLimits& limits) {
    SearchOrder order;
    order.listener = {printFinding, printRootMove, finished};
    order.nodes = static_cast<u64>(std::max(i64{1}, limits.nodes.value_or(std::numeric_limits<i64>::max())));
    order.mateMoves = static_cast<i32>(std::clamp(limits.mate.value_or(0), i64{0}, i64{1000}));
    order.only = limits.only;
    return order;
}

static Answer answerTo(const GoLimits& limits) {
    if (limits.ponder) {
        return Answer::whenPonderHitOrStopped;
    }
    return isEndless(limits) ? Answer::whenStopped : Answer::byItself;
}

static void go(std::string_view words, SessionLock& lock) {
    answerNow(lock);
    state.limits = readGo(words, state.game.standing);
    state.answer = answerTo(state.limits);
    applySettings();
    const std::string book = isForPlay(state.limits) ? bookMove(state.game.standing, ownMoves()) : "";
    if (!book.empty()) {
        tell("move from book");
        printBestMove({book, {}, false});
        return;
    }
    limitDepth(state.limits);
    setBudget(state.limits);
    startSearch(orderOf(state.limits));
}

static void stop(std::string_view, SessionLock&) {
    releaseAnswer();
    hurrySearch();
}

// A search that is deep enough by the engine's rule answers at once; else it has its share of the clock from now on.
static void ponderHit(std::string_view, SessionLock&) {
    if (state.answer != Answer::whenPonderHitOrStopped) {
        return;
    }
    GoLimits limits = state.limits;
    limits.ponder = false;
    if (isEndless(limits)) {
        state.answer = Answer::whenStopped;
        return;
    }
    releaseAnswer();
    if (!searchRuns()) {
        return;
    }
    if (limits.moveTime) {
        allotRunningMilliseconds(*limits.moveTime);
    } else if (hasClock(limits)) {
        if (SearchInfo.iterationDepth >= settings.safePly) {
            hurrySearch();
        } else {
            const CoreSpeaks comments;
            allotRunningByClocks();
        }
    }
}

// ---- the table ------------------------------------------------------------------------------------------------

namespace {

struct UciCommand {
    const char* word;
    void (*act)(std::string_view words, SessionLock& lock);
};

constexpr UciCommand commands[] = {
    {"uci", introduce},          {"isready", answerReady},   {"debug", setDebug}, {"setoption", takeOption},
    {"ucinewgame", takeNewGame}, {"position", takePosition}, {"go", go},          {"stop", stop},
    {"ponderhit", ponderHit},
};

}  // namespace

void beginUci() {
    state = {};
    commentPrefix = nullptr;
    startGame(state.game);
}

// Unknown words are passed over, and the rest of the line is looked at.
bool takeUciLine(const std::string& line, SessionLock& lock) {
    Words words{line};
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        if (word == "quit") {
            return false;
        }
        const auto command =
            std::ranges::find_if(commands, [word](const UciCommand& each) { return word == each.word; });
        if (command != std::end(commands)) {
            command->act(words.remainder(), lock);
            return true;
        }
    }
    return true;
}

void endUci(SessionLock& lock) {
    answerNow(lock);
}
