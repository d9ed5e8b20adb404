#include "edit_mode.h"

#include "fen_reader.h"
#include "gui_support.h"

namespace {

std::string edited(const Game& game, std::initializer_list<const char*> lines) {
    EditMode edit;
    beginEdit(edit, game.standing.record);
    for (const char* line : lines) {
        EXPECT_TRUE(takeEditLine(edit, line)) << line;
    }
    EXPECT_FALSE(takeEditLine(edit, "."));
    return readFen(fenOf(edit)).fen;
}

}  // namespace

TEST(EditMode, WithoutALineThePositionIsTheFormerOne) {
    EXPECT_EQ(edited(gameFromStart(), {}), startFen);
    EXPECT_EQ(edited(gameFromStart("e2e4"), {}),
              "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1");
}

TEST(EditMode, MenAreOfTheColourInHand) {
    EXPECT_EQ(edited(gameFromStart(), {"#", "Ke1", "Rh1", "c", "Ke8", "Pa7", "c", "Pa2"}),
              "4k3/p7/8/8/8/8/P7/4K2R w K - 0 1");
}

TEST(EditMode, SquaresAreEmptiedOneByOne) {
    EXPECT_EQ(edited(gameFromStart(), {"xd1", "xd8"}),
              "rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR w KQkq - 0 1");
}

TEST(EditMode, OtherLinesAreDropped) {
    EXPECT_EQ(edited(gameFromStart(), {"", "Zz9", "Za1", "Pa9", "Pi1", "hello", "Pa22"}), startFen);
}
