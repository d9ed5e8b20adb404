// Whole searches with an evaluation of material and placement alone against a list made by an independent model: a fault
// of the search is told from one of the evaluation.
#include "search/golden_lists.h"

namespace {

class GoldenMaterialSearch : public testing::TestWithParam<Portion> {};

TEST_P(GoldenMaterialSearch, ThinkingLinesAreThoseOfTheModel) {
    expectLinesOfTheModel(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Lists, GoldenMaterialSearch,
                         testing::ValuesIn(portionsOf("Material", "search-material.txt", 0)), nameOf);

}  // namespace
