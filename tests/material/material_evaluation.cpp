// The evaluation of this program alone, in place of the engine's: what the lists of material were made with.
#include "board/board.h"
#include "eval/eval.h"

i16 evaluate() {
    return sufficientMaterial() == 0 ? i16{0} : board->psqScore;
}
