// Published tables against the rules themselves: three men against a solver, four men against what follows from their
// own successors. Distances may be stored in pairs of plies, so they are known to within one.
#include "real_tables.h"
#include "plain_rules.h"
#include "plain_solver.h"
#include "support/test_data.h"
#include "table_names.h"

#include <random>

using plain::Position;
using plain::Successor;

namespace {

std::string committedFolder() {
    return testDataPath("syzygy");
}

Position colourSwapped(const Position& p) {
    Position swapped = plain::emptyPosition();
    for (i32 square = 0; square < 64; ++square) {
        const char man = p.men[square];
        const bool isUpper = man >= 'A' && man <= 'Z';
        const bool isLower = man >= 'a' && man <= 'z';
        swapped.men[square ^ 56] = isUpper || isLower ? static_cast<char>(man ^ 0x20) : man;
    }
    swapped.whiteMoves = !p.whiteMoves;
    return swapped;
}

void expectSolvedValues(char man) {
    const plain::ThreeMen& table = plain::solvedThreeMen(man);
    i64 wrongWdl = 0;
    i64 wrongDtz = 0;
    i64 decided = 0;
    for (i32 i = 0; i < plain::threeMenPositions; ++i) {
        if (!table.legal[i]) {
            continue;
        }
        const Position p = positionOf(table, i);
        const plain::Value expected = table.values[i];
        const tables::Values found = tables::probe(plain::fenOf(i % 3 == 0 ? p : colourSwapped(p)));
        decided += expected.wdl != 0 ? 1 : 0;
        wrongWdl += found.wdlKnown && found.wdl == expected.wdl ? 0 : 1;
        const bool signFits = (found.dtz > 0) == (expected.dtz > 0) && (found.dtz < 0) == (expected.dtz < 0);
        wrongDtz += found.dtzKnown && signFits && std::abs(found.dtz - expected.dtz) <= 1 ? 0 : 1;
    }
    EXPECT_EQ(wrongWdl, 0);
    EXPECT_EQ(wrongDtz, 0);
    EXPECT_EQ(decided > 0, man != 'B' && man != 'N');
}

}  // namespace

class ThreeMenTables : public testing::TestWithParam<char> {};

TEST_P(ThreeMenTables, AgreeWithTheRulesInEveryPositionFullDepth) {
    tables::registerFolder(committedFolder());
    expectSolvedValues(GetParam());
}

INSTANTIATE_TEST_SUITE_P(RealTables, ThreeMenTables, testing::Values('Q', 'R', 'B', 'N', 'P'),
                         [](const auto& test) { return std::string(1, test.param); });

// ---- four men -------------------------------------------------------------------------------------------------

namespace {

struct Expected {
    i32 wdl;
    i32 dtz;
};

bool isMate(const Position& p) {
    return plain::inCheck(p, p.whiteMoves) && plain::legalSuccessors(p).empty();
}

// The value that follows from those of the successors.
Expected expectedFrom(const Position& p) {
    const std::vector<Successor> successors = plain::legalSuccessors(p);
    if (successors.empty()) {
        return plain::inCheck(p, p.whiteMoves) ? Expected{-2, -1} : Expected{0, 0};
    }
    i32 wdl = -2;
    i32 fastestWin = 1000;
    i32 longestLoss = 1;
    for (const Successor& successor : successors) {
        const tables::Values after = tables::probe(plain::fenOf(successor.position));
        EXPECT_TRUE(after.wdlKnown && after.dtzKnown) << plain::fenOf(successor.position);
        wdl = std::max(wdl, -after.wdl);
        const bool ends = successor.zeroing || (after.wdl == -2 && isMate(successor.position));
        if (after.wdl == -2) {
            fastestWin = std::min(fastestWin, ends ? 1 : 1 - after.dtz);
        }
        if (after.wdl == 2) {
            longestLoss = std::max(longestLoss, ends ? 1 : 1 + after.dtz);
        }
    }
    return Expected{wdl, wdl == 2 ? fastestWin : wdl == -2 ? -longestLoss : 0};
}

// Whether a pawn may step past an enemy's by two squares. Deliberate: the winner's distance takes such a step for one that
// cannot be captured, and may so be 1 where it is more.
bool stepMayBeTaken(const Position& p) {
    for (i32 file = 0; file < 8; ++file) {
        for (const i32 other : {file - 1, file + 1}) {
            if (other < 0 || other > 7) {
                continue;
            }
            if ((p.men[8 + file] == 'P' && p.men[24 + other] == 'p') ||
                (p.men[48 + file] == 'p' && p.men[32 + other] == 'P')) {
                return true;
            }
        }
    }
    return false;
}

struct Tally {
    i64 positions;
    i64 decided;
    i64 wrongWdl;
    i64 wrongDtz;  // by more than two plies: one of the position's own, one of the successor's
    i64 twoPlies;
    std::string firstWrong;
};

void check(const Position& p, Tally& tally) {
    const std::string fen = plain::fenOf(p);
    const tables::Values found = tables::probe(fen);
    const Expected expected = expectedFrom(p);
    const i32 error = std::abs(found.dtz - expected.dtz);
    const bool signFits = (found.dtz > 0) == (expected.dtz > 0) && (found.dtz < 0) == (expected.dtz < 0);
    const bool wrongWdl = !found.wdlKnown || found.wdl != expected.wdl;
    const bool wrongDtz = !found.dtzKnown || !signFits || (error > 2 && !stepMayBeTaken(p));
    ++tally.positions;
    tally.decided += found.wdl != 0 ? 1 : 0;
    tally.twoPlies += error == 2 ? 1 : 0;
    tally.wrongWdl += wrongWdl ? 1 : 0;
    tally.wrongDtz += wrongDtz ? 1 : 0;
    if ((wrongWdl || wrongDtz) && tally.firstWrong.empty()) {
        tally.firstWrong = fen;
    }
}

Tally checkRandomPositions(const std::vector<std::string>& names, i32 eachCount) {
    std::mt19937_64 random(20);
    Tally tally{};
    for (const std::string& name : names) {
        for (i32 i = 0; i < eachCount; ++i) {
            const std::string men = plain::menOfName(i % 2 == 0 ? name : plain::swappedName(name));
            check(plain::randomPosition(men, random), tally);
        }
    }
    return tally;
}

void expectConsistent(const Tally& tally) {
    EXPECT_EQ(tally.wrongWdl, 0) << tally.firstWrong;
    EXPECT_EQ(tally.wrongDtz, 0) << tally.firstWrong;
    EXPECT_LE(tally.twoPlies * 1000, tally.positions);
    EXPECT_GT(tally.decided * 3, tally.positions);
}

std::vector<std::string> fourMenNames() {
    std::vector<std::string> names = tableNames(4);
    std::erase_if(names, [](const std::string& name) { return name.size() != 5; });
    return names;
}

}  // namespace

TEST(RealTables, FourMenFollowFromTheirSuccessors) {
    if (tables::realFolder().empty()) {
        GTEST_SKIP() << "needs TARVELMON_SYZYGY_PATH";
    }
    tables::registerFolder(tables::realFolder());
    expectConsistent(checkRandomPositions(fourMenNames(), 500));
}

TEST(RealTables, FourMenFollowFromTheirSuccessorsFullDepth) {
    if (tables::realFolder().empty()) {
        GTEST_SKIP() << "needs TARVELMON_SYZYGY_PATH";
    }
    tables::registerFolder(tables::realFolder());
    const Tally tally = checkRandomPositions(fourMenNames(), 7000);
    EXPECT_GE(tally.positions, 200000);
    expectConsistent(tally);
}
