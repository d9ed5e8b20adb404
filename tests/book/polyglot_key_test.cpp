// The book's key against the published test positions of the format, and where the engine departs from it.
#include "board/board.h"
#include "board/tables.h"
#include "book/book.h"
#include "frontend/session.h"
#include "hash/random64.h"
#include "support/position.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

static u64 keyOf(const char* fen) {
    setUpPosition(fen);
    return polyglotKey();
}

struct LineCase {
    const char* name;
    const char* moves;
    u64 key;
};

// Published with the format.
static const LineCase publishedCases[] = {
    {"start", "", 0x463B96181691FC9C},
    {"e4", "e2e4", 0x823C9B50FD114196},
    {"e4 d5", "e2e4 d7d5", 0x0756B94461C50FB0},
    {"e4 d5 e5", "e2e4 d7d5 e4e5", 0x662FAFB965DB29D4},
    {"e4 d5 e5 f5 Ke2", "e2e4 d7d5 e4e5 f7f5 e1e2", 0x652A607CA3F242C1},
    {"e4 d5 e5 f5 Ke2 Kf7", "e2e4 d7d5 e4e5 f7f5 e1e2 e8f7", 0x00FDD303C946BDD9},
    {"a4 b5 h4 b4 c4 bxc3 Ra3", "a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3", 0x5C3F9B829B279560},
};

TEST(PolyglotKey, EqualsThePublishedKeys) {
    for (const LineCase& c : publishedCases) {
        SCOPED_TRACE(c.name);
        newGame();
        play(c.moves);
        EXPECT_EQ(polyglotKey(), c.key);
    }
}

// The published keys of these two positions have an en passant term.
TEST(PolyglotKey, LeavesOutEnPassantInPlay) {
    newGame();
    play("e2e4 d7d5 e4e5 f7f5");
    EXPECT_EQ(polyglotKey(), 0xF240C920DB53040AU);
    EXPECT_EQ(polyglotKey() ^ Random64[772 + 5], 0x22A48B5A8E47FF78U);
    newGame();
    play("a2a4 b7b5 h2h4 b5b4 c2c4");
    EXPECT_EQ(polyglotKey() ^ Random64[772 + 2], 0x3C8123EA7B067637U);
}

TEST(PolyglotKey, IsTheSameWithAndWithoutTheEnPassantField) {
    EXPECT_EQ(keyOf("rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3"),
              keyOf("rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq - 0 3"));
}

struct EpCase {
    const char* name;
    const char* placement;  // with the side to move
    const char* target;
    bool hasTerm;
};

// Positions that no game reaches: the term asks for a pawn on the square passed over.
static const EpCase epCases[] = {
    {"a pawn there, attacked from the left", "4k3/8/5p2/4P3/8/8/8/4K3 w", "f6", true},
    {"a pawn there, attacked from the right", "4k3/8/5p2/6P1/8/8/8/4K3 w", "f6", true},
    {"an own pawn there", "4k3/8/5P2/4P3/8/8/8/4K3 w", "f6", true},
    {"the attacker may be any own man", "4k3/8/5p2/4N3/8/8/8/4K3 w", "f6", true},
    {"an enemy's man beside does not count", "4k3/8/5p2/4p3/8/8/8/4K3 w", "f6", false},
    {"no pawn there", "4k3/8/8/4P3/8/8/8/4K3 w", "f6", false},
    {"a knight there is no pawn", "4k3/8/5n2/4P3/8/8/8/4K3 w", "f6", false},
    {"a pawn there, not attacked", "4k3/8/5p2/8/8/8/8/4K3 w", "f6", false},
    {"Black to move", "4k3/8/8/8/4p3/5P2/8/4K3 b", "f3", true},
    {"the a-file does not see the h-file", "4k3/8/p7/7P/8/8/8/4K3 w", "a6", false},
    {"the h-file does not see the a-file", "4k3/8/7p/P7/8/8/8/4K3 w", "h6", false},
    {"the h-file does not see the next rank's a-file", "4k3/8/p7/8/7P/8/8/4K3 w", "a6", false},
    {"the a-file does not see its own rank's h-file", "4k3/8/P6p/8/8/8/8/4K3 w", "h6", false},
    {"the a-file", "4k3/8/p7/1P6/8/8/8/4K3 w", "a6", true},
    {"the h-file", "4k3/8/7p/6P1/8/8/8/4K3 w", "h6", true},
};

TEST(PolyglotKey, HasTheEnPassantTermOnlyWithAPawnOnTheTarget) {
    for (const EpCase& c : epCases) {
        SCOPED_TRACE(c.name);
        const std::string placement = c.placement;
        const u64 without = keyOf((placement + " - - 0 1").c_str());
        const u64 with = keyOf((placement + " - " + c.target + " 0 1").c_str());
        EXPECT_EQ(with ^ without, c.hasTerm ? Random64[772 + static_cast<u32>(c.target[0] - 'a')] : 0);
    }
}

TEST(PolyglotKey, HasATermForEachRight) {
    const char* placement = "r3k2r/8/8/8/8/8/8/R3K2R";
    const char* rights[] = {"K", "Q", "k", "q"};
    for (const char* side : {"w", "b"}) {
        const std::string start = std::string(placement) + " " + side + " ";
        const u64 none = keyOf((start + "- - 0 1").c_str());
        for (u32 i = 0; i < 4; ++i) {
            EXPECT_EQ(keyOf((start + rights[i] + " - 0 1").c_str()) ^ none, Random64[768 + i])
                << side << rights[i];
        }
    }
}

TEST(PolyglotKey, HasTheTurnTermForWhite) {
    EXPECT_EQ(keyOf("4k3/8/8/3q4/8/8/8/4K3 w - - 0 1") ^ keyOf("4k3/8/8/3q4/8/8/8/4K3 b - - 0 1"),
              Random64[780]);
}

TEST(PolyglotKey, HasATermForEachManOnItsRealSquare) {
    constexpr std::string_view order = "pPnNbBrRqQkK";
    for (u32 piece = 0; piece < order.size(); ++piece) {
        const std::string placement = std::string("8/8/8/8/8/2") + order[piece] + "5/8/8 w - - 0 1";
        const u64 empty = keyOf("8/8/8/8/8/8/8/8 w - - 0 1");
        EXPECT_EQ(keyOf(placement.c_str()) ^ empty, Random64[64 * piece + 18]) << order[piece] << " on c3";
    }
    EXPECT_EQ(keyOf("7k/8/8/8/8/8/8/8 b - - 0 1"), Random64[64 * 10 + 63]);
}

TEST(PolyglotKey, LeavesThePositionAsItWas) {
    newGame();
    ASSERT_EQ(fenToBoard("r3k2r/8/8/8/4p3/5P2/8/R3K2R b KQkq f3 7 9"), 1);
    const Scacchiera before = *board;
    static_cast<void>(polyglotKey());
    EXPECT_EQ(std::memcmp(&before, board, sizeof before), 0);
}

TEST(PolyglotKey, SurvivesAManThatIsNone) {
    newGame();
    board->pbq = board->nbk = board->rqk = ~TBB{0};
    static_cast<void>(polyglotKey());
    newGame();
}
