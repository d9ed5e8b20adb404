// The engine plays positions of four men, its search filtered at the root by the tables, against the best defence that
// the tables know: won ones are won within the fifty-move rule, drawn ones are held. TARVELMON_PLAYOUTS sets how many,
// TARVELMON_PLAYOUT_DEPTH how deep the search goes.
#include "board/board.h"
#include "frontend/frontend.h"
#include "hash/hash.h"
#include "plain_rules.h"
#include "platform/platform.h"
#include "real_tables.h"
#include "search/search.h"
#include "table_names.h"

#include <map>
#include <random>
#include <tuple>

namespace {

constexpr i32 drawnGamePlies = 80;
constexpr i32 fiftyMoves = 100;  // plies

i32 numberFromEnvironment(const char* variable, i32 otherwise) {
    const char* text = std::getenv(variable);
    return text == nullptr ? otherwise : std::atoi(text);
}

i32 gameCount() {
    return numberFromEnvironment("TARVELMON_PLAYOUTS", 60);
}

void setUpEngine() {
    EngineOptions.hashSize = 1;
    EngineOptions.hashEntries = 65536;
    hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
    EngineOptions.pawnHashSize = 1;
    EngineOptions.pawnHashEntries = 16384;
    pawnHashAlloc();
    EngineOptions.syzygy = 1;
    EngineOptions.syzygyMen = 5;
    EngineOptions.minDepth = 1;
    EngineOptions.maxDepth = numberFromEnvironment("TARVELMON_PLAYOUT_DEPTH", 5);
    EngineOptions.postThinking = 0;
    TimeControl.moveTime = 1'000'000;
    TimeControl.allocatedTime = 1'000'000;
}

Mossa engineMove() {
    EngineOptions.stopSearch = 0;
    EngineOptions.searchStartMs = nowMs();
    return think(0);
}

i32 wdlHere() {
    i32 success = 0;
    const i32 wdl = probeWdl(success);
    EXPECT_NE(success, 0);
    return wdl;
}

i32 dtzHere() {
    i32 success = 0;
    const i32 dtz = probeDtz(success);
    EXPECT_NE(success, 0);
    return dtz;
}

std::vector<Mossa> legalHere() {
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    return {moves.begin(), moves.begin() + count};
}

// The loser's move after which the winner is farthest from its aim.
Mossa longestResistance(std::mt19937_64& random) {
    std::vector<Mossa> moves = legalHere();
    std::shuffle(moves.begin(), moves.end(), random);
    Mossa best = 0;
    i32 bestDtz = -1;
    for (const Mossa move : moves) {
        makeMove(move);
        const i32 wdl = wdlHere();
        const i32 dtz = wdl != 2 ? 1000 : board->rule50 == 0 ? 1 : dtzHere();
        --board;
        if (dtz > bestDtz) {
            best = move;
            bestDtz = dtz;
        }
    }
    return best;
}

// A move that keeps the draw, so that the game goes on and the engine may err.
Mossa drawingMove(std::mt19937_64& random) {
    std::vector<Mossa> moves = legalHere();
    std::shuffle(moves.begin(), moves.end(), random);
    for (const Mossa move : moves) {
        makeMove(move);
        const i32 wdl = wdlHere();
        --board;
        if (wdl == 0) {
            return move;
        }
    }
    return moves.front();
}

using SeenRecord = std::tuple<TBB, TBB, TBB, TBB, u8>;

// Whether the position stands for the third time. The engine's own count is another, deliberately.
bool standsForTheThirdTime(std::map<SeenRecord, i32>& seen) {
    const Scacchiera& b = *board;
    return ++seen[{b.side, b.pbq, b.nbk, b.rqk, b.stateFlags & blackToMoveFlag}] >= 3;
}

enum class Outcome : u8 { mate, stalemate, fiftyMoveRule, stillOpen };

struct Game {
    Outcome outcome;
    bool repeated;  // a position stood for the third time; the game goes on
};

// Plays on from the position at `board`; the engine moves first or second. `reply` plays the other side.
template <typename Reply>
Game playOut(bool engineMoves, i32 pliesMax, Reply reply) {
    std::map<SeenRecord, i32> seen;
    bool repeated = false;
    for (i32 ply = 0; ply < pliesMax; ++ply, engineMoves = !engineMoves) {
        if (legalHere().empty()) {
            return {inCheck() != 0 ? Outcome::mate : Outcome::stalemate, repeated};
        }
        if (board->rule50 >= fiftyMoves) {
            return {Outcome::fiftyMoveRule, repeated};
        }
        repeated = standsForTheThirdTime(seen) || repeated;
        makeMove(engineMoves ? engineMove() : reply());
    }
    return {Outcome::stillOpen, repeated};
}

std::string randomFourMen(std::mt19937_64& random) {
    std::vector<std::string> names = tableNames(4);
    std::erase_if(names, [](const std::string& name) { return name.size() != 5; });
    const std::string name = names[static_cast<std::size_t>(random() % names.size())];
    return plain::fenOf(
        plain::randomPosition(plain::menOfName(random() % 2 == 0 ? name : plain::swappedName(name)), random));
}

class Playout : public testing::Test {
  protected:
    void SetUp() override {
        if (tables::realFolder().empty()) {
            GTEST_SKIP() << "needs TARVELMON_SYZYGY_PATH";
        }
        tables::registerFolder(tables::realFolder());
        testing::internal::CaptureStdout();
        setUpEngine();
        testing::internal::GetCapturedStdout();
    }
    void TearDown() override { EngineOptions.syzygy = 0; }
};

}  // namespace

TEST_F(Playout, WinsWonPositionsWithinTheFiftyMoveRule) {
    std::mt19937_64 random(50);
    i32 repeatedGames = 0;
    for (i32 games = 0; games < gameCount();) {
        const std::string fen = randomFourMen(random);
        setUpPosition(fen);
        const i32 wdl = wdlHere();
        if (wdl == 0 || legalHere().empty()) {
            continue;
        }
        ++games;
        testing::internal::CaptureStdout();
        const bool engineMoves = wdl > 0;
        const Game game = playOut(engineMoves, 400, [&] { return longestResistance(random); });
        testing::internal::GetCapturedStdout();
        repeatedGames += game.repeated ? 1 : 0;
        const bool engineIsMated =
            game.outcome == Outcome::mate && (board - boardStack.data()) % 2 == (engineMoves ? 0 : 1);
        EXPECT_EQ(game.outcome, Outcome::mate) << fen;
        EXPECT_FALSE(engineIsMated) << fen;
    }
    RecordProperty("repeatedGames", repeatedGames);
}

TEST_F(Playout, HoldsDrawnPositions) {
    std::mt19937_64 random(51);
    for (i32 games = 0; games < gameCount();) {
        const std::string fen = randomFourMen(random);
        setUpPosition(fen);
        if (wdlHere() != 0 || legalHere().empty()) {
            continue;
        }
        const bool engineMoves = games % 2 == 0;
        ++games;
        testing::internal::CaptureStdout();
        bool isLost = false;
        const Game game = playOut(engineMoves, drawnGamePlies, [&] {
            isLost = isLost || wdlHere() > 0;
            return drawingMove(random);
        });
        testing::internal::GetCapturedStdout();
        EXPECT_FALSE(isLost) << fen;
        EXPECT_NE(game.outcome, Outcome::mate) << fen;
    }
}
