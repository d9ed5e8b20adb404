// A node of the search: its exits in their order, what decides pruning, and what it leaves in the tables.
#include "eval/eval.h"
#include "search/internal.h"
#include "search/search_fixture.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

// Arguments of a node, those of the first ply unless a test says otherwise.
struct Node {
    i32 depth = 1;
    i32 ply = 1;
    i32 alpha = -INFINITE;
    i32 beta = INFINITE;
    i32 mateScore = MATE - 1;
    i32 allowNull = 1;
    i32 extendedLine = 0;
};

i16 run(const Node& node, PvLine& line) {
    return search(wrap16(node.depth), wrap16(node.ply), wrap16(node.alpha), wrap16(node.beta), line,
                  wrap16(node.mateScore), node.allowNull, node.extendedLine, 0);
}

i16 run(const Node& node) {
    PvLine line{};
    return run(node, line);
}

ys_hash slotAfter(const std::string& move) {
    makeMove(findMove(move));
    const ys_hash slot = slotHere();
    --board;
    return slot;
}

// ---- draws and limits -----------------------------------------------------------------------------------------

TEST(Search, TheThirdOccurrenceIsADrawBeforeAnyHashProbe) {
    setUpFreshState(middleGameFen);
    hashStore(50, 777, HASH_EXACT, 0);
    EXPECT_EQ(run({}), 777);
    board->stateFlags = static_cast<u8>(board->stateFlags | 2);
    EXPECT_EQ(run({}), 0);
}

TEST(Search, TheFiftyMoveRuleIsADrawBeforeAnyHashProbe) {
    for (const u8 rule50 : {u8{100}, u8{101}, u8{255}}) {
        SCOPED_TRACE(rule50);
        setUpFreshState(middleGameFen);
        hashStore(50, 777, HASH_EXACT, 0);
        board->rule50 = rule50;
        EXPECT_EQ(run({}), 0);
    }
}

TEST(Search, AMateByTheHundredthPlyCounts) {
    setUpFreshState(foolsMateFen);
    board->rule50 = 100;
    EXPECT_EQ(run({.mateScore = 19990}), -19990);
}

TEST(Search, AReplyToACheckAtTheHundredthPlyIsADrawUnlessItResetsTheCount) {
    setUpFreshState("k7/8/8/8/8/8/8/q5K1 w - - 0 1");  // in check by a queen, with king moves only
    ASSERT_NE(inCheck(), 0U);
    EXPECT_LT(run({.depth = 2}), -500);
    setUpFreshState("k7/8/8/8/8/8/8/q5K1 w - - 0 1");
    board->rule50 = 100;
    EXPECT_EQ(run({.depth = 2}), 0);
}

TEST(Search, AtPly64QuiescenceTakesOverWithoutHashOrMateDistance) {
    setUpFreshState(middleGameFen);
    hashStore(50, 777, HASH_EXACT, 0);
    const i16 settled = quiescenceGuard(0, -INFINITE, INFINITE, 19000, 0);
    ASSERT_NE(settled, 777);
    EXPECT_EQ(run({.depth = 3, .ply = 64}), settled);
    EXPECT_EQ(run({.depth = 3, .ply = 63}), 777);

    setUpFreshState(middleGameFen);
    board->psqScore = -5000;  // below any window here: the lazy exit tells that quiescence has been asked
    EXPECT_EQ(run({.ply = 64, .alpha = 150, .beta = 200, .mateScore = 100}), -5000);
    EXPECT_EQ(run({.ply = 63, .alpha = 150, .beta = 200, .mateScore = 100}), 150);
}

TEST(Search, AShorterMateClosesTheWindow) {
    setUpFreshState(middleGameFen);
    EXPECT_EQ(run({.alpha = 19980, .beta = 19990, .mateScore = 19970}), 19980);
    EXPECT_EQ(run({.alpha = 19970, .beta = 19990, .mateScore = 19970}), 19970);
    EXPECT_EQ(run({.alpha = -19990, .beta = -19980, .mateScore = 19970}), -19970);
    EXPECT_EQ(SearchInfo.nodes, 0U);
}

TEST(Search, WithTheStackUsedUpNothingIsWrittenBeyondIt) {
    setUpFreshState(middleGameFen);
    const Scacchiera* const ceiling = searchCeiling;
    searchCeiling = board + 3;
    const Scacchiera untouched{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    board[5] = untouched;
    run({.depth = 12});
    EXPECT_EQ(board[5].hashKey, untouched.hashKey);
    EXPECT_NE(board[3].hashKey, 0U) << "the records below have been used";
    searchCeiling = ceiling;
}

// ---- hash and stop --------------------------------------------------------------------------------------------

TEST(Search, AStoredCutOffWinsOverAStop) {
    setUpFreshState(middleGameFen);
    EngineOptions.stopSearch = 1;
    EXPECT_EQ(run({}), 1);
    hashStore(1, 333, HASH_EXACT, 0);
    EXPECT_EQ(run({}), 333);
    EXPECT_EQ(run({.depth = 2}), 1);
}

TEST(Search, TheClockStopsANode) {
    setUpFreshState(middleGameFen);
    TimeControl.allocatedTime = 10;
    EngineOptions.searchStartMs = ManualClock.ms - 1000;
    SearchInfo.nodes = 1024;
    EXPECT_EQ(run({}), 1);
    EXPECT_EQ(EngineOptions.stopSearch, 1);
}

TEST(Search, AtDepth0ACutOffOfTheTableHolds) {
    setUpFreshState(middleGameFen);
    hashStore(0, 444, HASH_EXACT, 0);
    EXPECT_EQ(run({.depth = 0}), 444);
}

TEST(Search, ValuesOfQuiescenceAreNotStored) {
    setUpFreshState(middleGameFen);
    const i16 settled = quiescenceGuard(0, -INFINITE, INFINITE, MATE - 1, 0);
    EXPECT_EQ(run({.depth = 0}), settled);
    EXPECT_EQ(slotHere().key, 0U);
}

// ---- the static cut-off ---------------------------------------------------------------------------------------

constexpr const char* queenUpFen = "4k3/pppp4/8/8/8/8/PPPP4/3QK3 w - - 0 1";

TEST(Search, TheStaticCutOffReturnsItsValueAndStoresNothing) {
    for (const i32 depth : {1, 2, 3}) {
        SCOPED_TRACE(depth);
        setUpFreshState(queenUpFen);
        const i32 value = evaluate() - 70 * depth;
        ASSERT_GT(value, 0);
        EXPECT_EQ(run({.depth = depth, .alpha = -10, .beta = 0}), value);
        EXPECT_EQ(run({.depth = depth, .alpha = value - 10, .beta = value}), value);
        EXPECT_EQ(SearchInfo.nodes, 0U);
        EXPECT_EQ(slotHere().key, 0U);
        run({.depth = depth, .alpha = value, .beta = value + 1});
        EXPECT_GT(SearchInfo.nodes, 0U);
    }
}

TEST(Search, ThereIsNoStaticCutOffAtDepth4NorInCheck) {
    setUpFreshState(queenUpFen);
    EXPECT_EQ(run({.depth = 4, .alpha = -10, .beta = 0}), 0) << "beta";
    EXPECT_GT(SearchInfo.nodes, 0U);
    setUpFreshState("4k3/pppp4/8/8/8/8/PPPPQ3/4K2r w - - 0 1");
    ASSERT_NE(inCheck(), 0U);
    EXPECT_EQ(run({.depth = 1, .alpha = -10, .beta = 0}), 0);
}

TEST(Search, BeyondABetaOf19500ThereIsNoStaticCutOff) {
    // A board that only a typed position can hold: its balance is above 19500.
    constexpr const char* fen = "8/8/8/7k/QQ6/QQQQQQQ1/QQQQQQ1P/KQQQQQQQ w - - 0 1";
    setUpFreshState(fen);
    const i32 value = evaluate() - 70;
    ASSERT_GT(value, 19501);
    EXPECT_EQ(run({.alpha = 0, .beta = 19500, .mateScore = 30000}), value);
    EXPECT_LE(run({.alpha = 0, .beta = 19501, .mateScore = 30000}), 19501);
    setUpFreshState(queenUpFen);
    board->psqScore = wrap16(board->psqScore + 2000);
    EXPECT_GT(run({.alpha = -19600, .beta = -19500}), 0) << "the lower limit is included too";
    EXPECT_EQ(run({.alpha = -19600, .beta = -19501}), -19501);
}

// ---- futility -------------------------------------------------------------------------------------------------

struct FutilityCase {
    const char* name;
    const char* fen;  // quiet moves only, none gives check
    i32 depth;
    i32 margin;
};

constexpr const char* fiveMenFen = "7k/6pp/8/8/8/8/P7/K7 w - - 0 1";
constexpr const char* twoMenFen = "8/8/8/7k/8/8/8/K7 w - - 0 1";
constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// 18.0 divided by the men, times 500, 890 or 1600, cut to an integer.
constexpr FutilityCase futilityCases[] = {
    {"32 men, depth 1", startFen, 1, 281},
    {"32 men, depth 2", startFen, 2, 500},
    {"32 men, depth 3", startFen, 3, 900},
    {"5 men, depth 1", fiveMenFen, 1, 1800},
    {"5 men, depth 2", fiveMenFen, 2, 3204},
    {"5 men, depth 3", fiveMenFen, 3, 5760},
    {"2 men, depth 1", twoMenFen, 1, 4500},
    {"2 men, depth 2", twoMenFen, 2, 8010},
    {"10 men, depth 1", "6rk/5ppp/8/8/8/8/PPP5/KR6 w - - 0 1", 1, 900},
};

// A slot of this position that forbids nothing and cuts nothing.
void storeShallowBound() {
    hashStore(0, 0, HASH_UPPER, 0);
}

TEST(Search, ANodeAllOfWhoseMovesArePrunedReturns0AndStoresAnUpperBoundWithoutAMove) {
    for (const FutilityCase& c : futilityCases) {
        SCOPED_TRACE(c.name);
        setUpFreshState(c.fen);
        storeShallowBound();
        const i32 alpha = board->psqScore + c.margin;
        EXPECT_EQ(run({.depth = c.depth, .alpha = alpha, .beta = alpha + 10}), 0);
        const ys_hash slot = slotHere();
        EXPECT_EQ(slot.bound, HASH_UPPER);
        EXPECT_EQ(slot.depth, c.depth);
        EXPECT_EQ(slot.value, 0);
        EXPECT_EQ(slot.move, 0U);
    }
}

TEST(Search, OneCentipawnBelowTheMarginNothingIsPruned) {
    for (const FutilityCase& c : futilityCases) {
        SCOPED_TRACE(c.name);
        setUpFreshState(c.fen);
        storeShallowBound();
        const i32 alpha = board->psqScore + c.margin - 1;
        EXPECT_EQ(run({.depth = c.depth, .alpha = alpha, .beta = alpha + 10}), alpha);
    }
}

TEST(Search, FutilityNeedsABoundInTheSlotAndALineWithoutExtension) {
    const auto isPruned = [](i32 depth, i32 extendedLine) {
        const i32 alpha = board->psqScore + 6000;
        return run({.depth = depth, .alpha = alpha, .beta = alpha + 10, .extendedLine = extendedLine}) == 0;
    };
    setUpFreshState(fiveMenFen);
    EXPECT_FALSE(isPruned(1, 0)) << "an empty slot";
    hashClear(EngineOptions.hashEntries);
    hashStore(0, 0, HASH_EXACT, 0);
    EXPECT_FALSE(isPruned(1, 0)) << "an exact entry";
    setUpFreshState(fiveMenFen);
    storeShallowBound();
    EXPECT_FALSE(isPruned(1, 1)) << "an extended line";
    setUpFreshState(fiveMenFen);
    storeShallowBound();
    EXPECT_FALSE(isPruned(4, 0)) << "depth 4";
    setUpFreshState(fiveMenFen);
    storeShallowBound();
    EXPECT_TRUE(isPruned(1, 0));
    setUpFreshState(fiveMenFen);
    board->hashKey += EngineOptions.hashEntries;
    storeShallowBound();
    board->hashKey -= EngineOptions.hashEntries;
    EXPECT_TRUE(isPruned(1, 0)) << "the bound of another position in the slot";
}

TEST(Search, AMoveThatGivesCheckIsNotPruned) {
    setUpFreshState("7k/6pp/8/8/8/8/P7/KR6 w - - 0 1");  // the rook checks on the eighth rank
    storeShallowBound();
    const i32 alpha = board->psqScore + 6000;
    EXPECT_EQ(run({.depth = 1, .alpha = alpha, .beta = alpha + 10}), alpha);
    EXPECT_EQ(slotHere().value, alpha);
}

// ---- the null move --------------------------------------------------------------------------------------------

// Compares the nodes of a search with the pass allowed and not. Up to depth 5 nothing else depends on it.
bool passIsTried(const char* fen, i32 depth, HashBound bound) {
    u32 nodes[2] = {};
    for (const i32 allowNull : {0, 1}) {
        setUpFreshState(fen);
        hashStore(0, 0, bound, 0);
        const i32 low = evaluate() - 300;
        run({.depth = depth, .alpha = low, .beta = low + 10, .allowNull = allowNull});
        nodes[allowNull] = SearchInfo.nodes;
    }
    return nodes[0] != nodes[1];
}

constexpr const char* pawnsFen = "4k3/pppp4/8/8/8/8/PPPPP3/4K3 w - - 0 1";
constexpr const char* knightFen = "1n2k3/pp6/8/8/8/8/PPPPPP2/4K3 w - - 0 1";

TEST(Search, ThePassNeedsAPieceOfEitherColour) {
    EXPECT_FALSE(passIsTried(pawnsFen, 4, HASH_UPPER));
    EXPECT_TRUE(passIsTried(knightFen, 4, HASH_UPPER));
}

TEST(Search, ThePassNeedsMoreThanDepth3ABoundInTheSlotAndNoCheck) {
    EXPECT_TRUE(passIsTried(knightFen, 4, HASH_LOWER));
    EXPECT_FALSE(passIsTried(knightFen, 3, HASH_UPPER));
    EXPECT_FALSE(passIsTried(knightFen, 4, HASH_EXACT));
    EXPECT_FALSE(passIsTried("4k3/pp6/8/8/8/3n4/PPPP1PP1/4K3 w - - 0 1", 4, HASH_UPPER)) << "in check";
}

// ---- extensions -----------------------------------------------------------------------------------------------

TEST(Search, TheChildOfASingleReplyToCheckGainsAPly) {
    setUpFreshState("6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1");  // the bishop on g1 is all there is
    run({.depth = 1});
    EXPECT_EQ(slotAfter("c5g1").depth, 2);
}

TEST(Search, WithTwoRepliesToCheckNothingIsExtended) {
    setUpFreshState("6k1/8/8/2B5/8/7P/6P1/r6K w - - 0 1");  // the king may go to h2
    run({.depth = 2});
    EXPECT_EQ(slotAfter("c5g1").depth, 1);
}

// ---- what moves leave behind ----------------------------------------------------------------------------------

TEST(Search, AQuietCutOffEntersKillersHistoryAndTable) {
    setUpFreshState(startFen);
    historyTable = {};
    EXPECT_EQ(run({.depth = 4, .ply = 7, .alpha = -400, .beta = -300}), -300);
    const ys_hash slot = slotHere();
    ASSERT_NE(slot.move, 0U);
    EXPECT_EQ(slot.bound, HASH_LOWER);
    EXPECT_EQ(slot.depth, 4);
    EXPECT_GE(slot.value, -300);
    EXPECT_THAT(killers[7], ElementsAre(slot.move, 0));
    EXPECT_GE(historyTable[0][moveFrom(slot.move)][moveTo(slot.move)], 16);
}

TEST(Search, HistoryWrapsWithoutHarm) {
    setUpFreshState(startFen);
    for (auto& squares : historyTable[0]) {
        squares.fill(INT32_MAX);
    }
    EXPECT_EQ(run({.depth = 4, .ply = 7, .alpha = -400, .beta = -300}), -300);
    const Mossa move = slotHere().move;
    EXPECT_LT(historyTable[0][moveFrom(move)][moveTo(move)], 0);
}

TEST(Search, AHashMoveThatCutsOffLeavesNothing) {
    setUpFreshState(startFen);
    const Mossa move = findMove("e2e4");
    hashStore(0, 5, HASH_LOWER, move);
    EXPECT_EQ(run({.depth = 4, .ply = 7, .alpha = -400, .beta = -300, .allowNull = 0}), -300);
    EXPECT_THAT(killers[7], ElementsAre(0, 0));
    EXPECT_EQ(slotHere().depth, 0);
    EXPECT_EQ(slotHere().value, 5);
}

TEST(Search, ACaptureThatCutsOffEntersTheTableAlone) {
    setUpFreshState("4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1");
    historyTable = {};
    EXPECT_EQ(run({.depth = 4, .ply = 7, .alpha = -20, .beta = -10}), -10);
    EXPECT_EQ(slotHere().move, findMove("e4d5"));
    EXPECT_THAT(killers[7], ElementsAre(0, 0));
}

TEST(Search, AStaleHashMoveIsNeitherPlayedNorHarmful) {
    for (const Mossa stale :
         {makeMossa(MOVE_ROOK, 27, 35), makeMossa(CAPT_QUEEN, 3, 35), makeMossa(63, 63, 63, 7)}) {
        setUpFreshState(startFen);
        hashStore(0, 0, HASH_UPPER, stale);
        const i16 value = run({.depth = 3, .allowNull = 0});
        setUpFreshState(startFen);
        hashStore(0, 0, HASH_UPPER, 0);
        EXPECT_EQ(run({.depth = 3, .allowNull = 0}), value);
    }
}

TEST(Search, TheLineIsWrittenWhenAlphaRises) {
    setUpFreshState(middleGameFen);
    PvLine line{};
    run({.depth = 3}, line);
    EXPECT_EQ(line.count, 3);
    EXPECT_NE(findMove(moveText(line.argmove[0])), 0U);
    PvLine untouched{};
    untouched.count = 17;
    setUpFreshState(middleGameFen);
    run({.depth = 3, .alpha = 5000, .beta = 6000}, untouched);
    EXPECT_EQ(untouched.count, 17);
}

TEST(Search, ACopiedLineIsCutAtTheWordsItHas) {
    PvLine child{};
    for (u32 i = 0; i < 64; ++i) {
        child.argmove[i] = i + 1;
    }
    for (const i32 count : {0, 1, 62, 63, 64}) {
        PvLine line{};
        child.count = count;
        copyLine(line, 1000, child);
        EXPECT_EQ(line.count, std::min(count + 1, 64));
        EXPECT_EQ(line.argmove[0], 1000U);
        EXPECT_EQ(line.argmove[1], 1U);
        EXPECT_EQ(line.argmove[63], 63U);
    }
}

// ---- mates ----------------------------------------------------------------------------------------------------

TEST(Search, MateAndStalemateAreTold) {
    setUpFreshState(foolsMateFen);
    EXPECT_EQ(run({.depth = 1, .mateScore = 19999}), -19999);
    EXPECT_EQ(slotHere().key, 0U) << "a mate is not stored";
    setUpFreshState("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(run({.depth = 1}), 0);
    EXPECT_EQ(slotHere().depth, 1);
}

TEST(Search, ThePassDoesNotShortenTheMateDistance) {
    // White passes and mates all the same: both the pass and the mate are seen from the same mateScore.
    setUpFreshState("6k1/5ppp/8/8/8/8/8/K2RR3 w - - 0 1");
    hashStore(0, 0, HASH_UPPER, 0);
    EXPECT_EQ(run({.depth = 6, .mateScore = 19999}), 19998);
}

}  // namespace
