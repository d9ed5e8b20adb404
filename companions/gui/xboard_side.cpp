// The commands of the xboard protocol, each told by its first word. While the engine thinks about its move, questions and
// settings are taken at once; what changes the game ends the thinking.
#include "xboard_side.h"

#include "book/book.h"
#include "book_move.h"
#include "comments.h"
#include "edit_mode.h"
#include "platform/print.h"
#include "settings.h"
#include "time_words.h"
#include "words.h"
#include "xboard_lines.h"
#include "xboard_play.h"

#include <algorithm>

static EditMode edit;

static i32 clampedNumber(std::string_view word, i64 low, i64 high, i32 otherwise) {
    const std::optional<i64> number = numberIn(word);
    return number ? static_cast<i32>(std::clamp(*number, low, high)) : otherwise;
}

// ---- session --------------------------------------------------------------------------------------------------

static void greet(std::string_view, SessionLock&) {
    print("\n");
}

static void tellFeatures(std::string_view, SessionLock&) {
    commentPrefix = "# ";
    print("feature done=0\n");
    print(
        "feature ping=1 setboard=1 usermove=1 playother=1 analyze=1 memory=1 time=1 name=1 draw=1 ics=1 "
        "reuse=1 "
        "debug=1 colors=0 sigint=0 sigterm=1 nps=0 san=0 pause=0 smp=0 exclude=0 variants=\"normal\" "
        "egt=\"syzygy\" myname=\"tarvelmon 0.12\"\n");
    const std::string all = describeOptions(Side::xboard);
    for (std::size_t start = 0; start < all.size();) {
        const std::size_t end = all.find('\n', start);
        print("feature option=\"%s\"\n", all.substr(start, end - start).c_str());
        start = end + 1;
    }
    applySettings();
    print("feature done=1\n");
}

static void takeRejected(std::string_view words, SessionLock&) {
    if (words == "debug") {
        commentPrefix = nullptr;
    }
}

static void drop(std::string_view, SessionLock&) {}

// The answer follows everything that came before the question, so also a move that is owed.
static void answerPing(std::string_view words, SessionLock&) {
    const std::string answer = "pong " + std::string(words);
    if (isThinking()) {
        session.owed.push_back(answer);
    } else {
        print("%s\n", answer.c_str());
    }
}

// ---- the game -------------------------------------------------------------------------------------------------

static void gameChanged() {
    session.over = false;
    session.hint.clear();
}

static void resetTime() {
    session.time.depth.reset();
    session.time.millisecondsPerMove.reset();
    session.time.clocks.own = session.time.base.value_or(settings.maxTime);
    session.time.clocks.opponent = session.time.base.value_or(0);
}

static void takeNew(std::string_view, SessionLock& lock) {
    settle(lock);
    startGame(session.game);
    gameChanged();
    resetTime();
    session.engineSide = session.analysisWanted ? neitherSide : blackSide;
    analyseIfWanted();
}

static void setUp(std::string_view fen) {
    const std::string fault = setUpGame(session.game, fen);
    if (!fault.empty()) {
        session.game.illegalReason = "the position is illegal";
        print("tellusererror Illegal position: %s\n", fault.c_str());
    }
    gameChanged();
    analyseIfWanted();
}

static void takeSetboard(std::string_view words, SessionLock& lock) {
    settle(lock);
    setUp(words);
}

static void takeEdit(std::string_view, SessionLock& lock) {
    settle(lock);
    beginEdit(edit, session.game.standing.record);
}

static void takeUsermove(std::string_view words, SessionLock& lock) {
    takeMove(words, lock);
}

static void takeUndo(std::string_view, SessionLock& lock) {
    settle(lock);
    takeBack(session.game);
    gameChanged();
    analyseIfWanted();
}

// One move of each side; the engine goes on with its colour.
static void takeRemove(std::string_view, SessionLock& lock) {
    settle(lock);
    takeBack(session.game);
    takeBack(session.game);
    gameChanged();
    analyseIfWanted();
}

static void takeForce(std::string_view, SessionLock& lock) {
    settle(lock);
    session.engineSide = neitherSide;
}

static u8 sideOnMove() {
    return blackToMove(session.game.standing.record) ? blackSide : whiteSide;
}

static void takeGo(std::string_view, SessionLock& lock) {
    settle(lock);
    session.analysisWanted = false;
    session.over = false;
    session.engineSide = sideOnMove();
    moveNow();
}

static void takePlayother(std::string_view, SessionLock& lock) {
    const std::string hint = session.hint;
    settle(lock);
    session.analysisWanted = false;
    session.over = false;
    session.engineSide = sideOnMove() == whiteSide ? blackSide : whiteSide;
    ponderAgain(hint);
}

// Only older interfaces say these, ahead of a "go" or of the other side's move.
static void takeWhite(std::string_view, SessionLock& lock) {
    settle(lock);
    session.engineSide = blackSide;
}

static void takeBlack(std::string_view, SessionLock& lock) {
    settle(lock);
    session.engineSide = whiteSide;
}

static void takeMoveNow(std::string_view, SessionLock&) {
    if (isThinking()) {
        hurrySearch();
    }
}

static void takeResult(std::string_view, SessionLock& lock) {
    if (!session.analysisWanted) {
        settle(lock);
        session.over = true;
    }
}

static void takeAnalyze(std::string_view, SessionLock& lock) {
    settle(lock);
    session.engineSide = neitherSide;
    session.analysisWanted = true;
    analyseIfWanted();
}

static void takeExit(std::string_view, SessionLock& lock) {
    settle(lock);
    session.engineSide = neitherSide;
    session.analysisWanted = false;
}

static void takeVariant(std::string_view words, SessionLock&) {
    if (words != "normal") {
        print("Error (unsupported variant): %s\n", std::string(words.substr(0, longestShownText)).c_str());
    }
}

// ---- questions ------------------------------------------------------------------------------------------------

static void takeStatus(std::string_view, SessionLock&) {
    printStatus();
}

static void takeHint(std::string_view, SessionLock&) {
    if (isThinking()) {
        return;
    }
    const std::string& move = session.busy == Busy::pondering ? session.expected : session.hint;
    if (findLegal(session.game.standing, move) != nullptr) {
        print("Hint: %s\n", move.c_str());
    }
}

// The core lists the book's moves of the position at `board`, which a search may hold: it is begun anew afterwards.
static void takeBook(std::string_view, SessionLock& lock) {
    if (isThinking()) {
        print(" (thinking)\n\n");
        return;
    }
    const Busy former = session.busy;
    const std::string expected = session.expected;
    settle(lock);
    if (bookIsThere()) {
        setLinePrefix(" ");
        bookList(settings.bookFile.c_str());
        setLinePrefix("");
    }
    print("\n");
    if (former == Busy::pondering) {
        ponderAgain(expected);
    }
    analyseIfWanted();
}

// ---- settings -------------------------------------------------------------------------------------------------

static void takePost(std::string_view, SessionLock&) {
    postWanted = 1;
}

static void takeNopost(std::string_view, SessionLock&) {
    postWanted = 0;
}

static void takeHard(std::string_view, SessionLock&) {
    session.ponderWanted = true;
}

static void takeEasy(std::string_view, SessionLock& lock) {
    session.ponderWanted = false;
    if (session.busy == Busy::pondering) {
        settle(lock);
    }
}

static void takeLevel(std::string_view text, SessionLock&) {
    Words words{text};
    const i32 moves = clampedNumber(words.next(), 0, 1000, 0);
    const std::optional<i32> base = baseTimeIn(words.next());
    const std::optional<i64> increment = secondsIn(words.next());
    if (!base) {
        print("Error (no time in it): level %s\n", std::string(text.substr(0, longestShownText)).c_str());
        return;
    }
    session.time.base = base;
    session.time.millisecondsPerMove.reset();
    session.time.clocks = {*base, *base, centisecondsOf(increment.value_or(0)), moves};
}

static void takeMoveTime(std::string_view words, SessionLock&) {
    const std::optional<i64> milliseconds = secondsIn(words);
    if (milliseconds) {
        session.time.millisecondsPerMove = milliseconds;
    }
}

static void takeDepth(std::string_view words, SessionLock&) {
    const std::optional<i64> depth = numberIn(words);
    if (depth) {
        session.time.depth = static_cast<i32>(std::clamp(*depth, i64{1}, i64{64}));
    }
}

static void takeTime(std::string_view words, SessionLock&) {
    session.time.clocks.own = clampedNumber(words, 0, longestClock, session.time.clocks.own);
}

static void takeOtim(std::string_view words, SessionLock&) {
    session.time.clocks.opponent = clampedNumber(words, 0, longestClock, session.time.clocks.opponent);
}

static void takeMemory(std::string_view words, SessionLock&) {
    const std::optional<i64> megabytes = numberIn(words);
    if (megabytes) {
        setHashMegabytes(*megabytes);
    }
}

static void takeEgtpath(std::string_view text, SessionLock&) {
    Words words{text};
    if (words.next() == "syzygy") {
        setTablePath(words.remainder());
    }
}

static void takeOption(std::string_view text, SessionLock&) {
    const std::size_t equals = text.find('=');
    const std::string_view value = equals == std::string_view::npos ? "" : text.substr(equals + 1);
    const std::string fault = setOption(Side::xboard, Words{text.substr(0, equals)}.remainder(), value);
    if (!fault.empty()) {
        print("Error (%s): option %s\n", fault.substr(0, longestShownText).c_str(),
              std::string(text.substr(0, longestShownText)).c_str());
    }
}

// ---- the table ------------------------------------------------------------------------------------------------

namespace {

struct XboardCommand {
    const char* word;
    void (*act)(std::string_view words, SessionLock& lock);
};

constexpr XboardCommand commands[] = {
    {"xboard", greet},
    {"protover", tellFeatures},
    {"accepted", drop},
    {"rejected", takeRejected},
    {"ping", answerPing},
    {"new", takeNew},
    {"variant", takeVariant},
    {"setboard", takeSetboard},
    {"edit", takeEdit},
    {"usermove", takeUsermove},
    {"undo", takeUndo},
    {"remove", takeRemove},
    {"force", takeForce},
    {"go", takeGo},
    {"playother", takePlayother},
    {"white", takeWhite},
    {"black", takeBlack},
    {"?", takeMoveNow},
    {"result", takeResult},
    {"analyze", takeAnalyze},
    {"exit", takeExit},
    {".", takeStatus},
    {"hint", takeHint},
    {"bk", takeBook},
    {"post", takePost},
    {"nopost", takeNopost},
    {"hard", takeHard},
    {"easy", takeEasy},
    {"level", takeLevel},
    {"st", takeMoveTime},
    {"sd", takeDepth},
    {"time", takeTime},
    {"otim", takeOtim},
    {"memory", takeMemory},
    {"egtpath", takeEgtpath},
    {"option", takeOption},
    // Nothing in the engine's play depends on these.
    {"random", drop},
    {"computer", drop},
    {"name", drop},
    {"rating", drop},
    {"ics", drop},
    {"draw", drop},
    {"ponder", drop},  // not of the protocol, but sent by some to every engine
};

}  // namespace

void beginXboard() {
    session = {};
    edit = {};
    commentPrefix = nullptr;  // an interface of version 1 knows no comments
    startGame(session.game);
    resetTime();
}

static void takeLineOfEdit(std::string_view line) {
    if (!takeEditLine(edit, line)) {
        setUp(fenOf(edit));
    }
}

static void takeUnknown(const std::string& line, std::string_view word, SessionLock& lock) {
    if (looksLikeMove(word)) {
        takeMove(word, lock);
    } else {
        print("Error (unknown command): %s\n", line.substr(0, longestShownText).c_str());
    }
}

bool takeXboardLine(const std::string& line, SessionLock& lock) {
    Words words{line};
    const std::string_view word = words.next();
    if (word == "quit") {
        return false;
    }
    if (edit.on) {
        takeLineOfEdit(word);
        return true;
    }
    if (word.empty()) {
        return true;
    }
    const auto command =
        std::ranges::find_if(commands, [word](const XboardCommand& each) { return word == each.word; });
    if (command != std::end(commands)) {
        command->act(words.remainder(), lock);
    } else {
        takeUnknown(line, word, lock);
    }
    return true;
}

void endXboard(SessionLock& lock) {
    settle(lock);
}
