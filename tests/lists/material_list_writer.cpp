// Writes the list of searches that have an evaluation of material and placement alone. This program is linked with that
// evaluation in place of the engine's, so it writes no other list.
#include "lists/write_list.h"
#include "support/fresh_state.h"

namespace {

constexpr SearchLimits materialLimits = {9, 80000};

bool writeMaterialSearch(const std::string& fen) {
    if (!startFresh(fen)) {
        return false;
    }
    writeThink(materialLimits);
    return true;
}

constexpr GoldenList goldenLists[] = {
    {"search-material.txt", writeMaterialSearch, true},
};

}  // namespace

int main(int argc, char** argv) {
    return runListWriter(goldenLists, argc, argv);
}
