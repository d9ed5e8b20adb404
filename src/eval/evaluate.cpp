// The driver of the static evaluation.
#include "eval/eval.h"

#include "board/board.h"
#include "eval/internal.h"

constinit bool evalMaterialOnly = false;
constinit std::array<i32, 22> evalTerms{};

i16 evaluate() {
    if (sufficientMaterial() == 0) {
        return 0;
    }
    return board->psqScore;
}
