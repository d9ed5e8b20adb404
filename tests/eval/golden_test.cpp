// The static values of the golden list.
#include "eval_support.h"

#include "support/golden.h"
#include "support/list_lines.h"

TEST(Golden, StaticValuesAreMetToTheUnit) {
    const std::vector<GoldenBlock> blocks = readGoldenBlocks("eval.txt");
    ASSERT_EQ(blocks.size(), 631U);
    for (const GoldenBlock& block : blocks) {
        SCOPED_TRACE(block.fen);
        setUp(block.fen.c_str());
        EXPECT_EQ(i32{board->psqScore}, i32{easyVal()});
        EXPECT_EQ(Lines{staticValues()}, block.lines);
    }
}
