// The attack maps: for each real square how many men of a side attack it, and of which kinds. evaluate works with sets
// that tell the same as long as no square has eight attackers; where one may have, it reads these maps.
#include "eval/eval.h"

#include "board/board.h"
#include "board/tables.h"
#include "eval/internal.h"

#include <utility>

constinit std::array<u8, 64> attackMapOwn{};
constinit std::array<u8, 64> attackMapEnemy{};

enum AttackFlag : u8 { BY_PAWN = 8, BY_MINOR = 16, BY_ROOK = 32, BY_QUEEN = 64, BY_KING = 128 };

namespace {

struct MapBuilder {
    std::array<u8, 64>& map;
    u32 toReal;  // a frame's square XOR this is the real square

    // Deliberate: nothing guards the three bits of the count, an eighth attacker carries into the flags.
    void add(TBB attacked, AttackFlag flag) {
        while (attacked != 0) {
            u8& entry = map[static_cast<u32>(popLowest(attacked)) ^ toReal];
            entry = static_cast<u8>((entry + 1) | flag);
        }
    }
};

}  // namespace

// Pawns first and the king last: with carries the order shows.
static void mapOwnAttacks(const Scacchiera& view, std::array<u8, 64>& map) {
    map = {};
    MapBuilder builder{map, blackToMove(view) ? 56U : 0U};
    const TBB occ = occupied(view);
    for (TBB men = pawns(view) & view.side; men != 0;) {
        builder.add(PawnAttacks[static_cast<u32>(popLowest(men))], BY_PAWN);
    }
    for (TBB men = knights(view) & view.side; men != 0;) {
        builder.add(KnightAttacks[static_cast<u32>(popLowest(men))], BY_MINOR);
    }
    for (TBB men = bishops(view) & view.side; men != 0;) {
        builder.add(bishopAttacks(popLowest(men), occ), BY_MINOR);
    }
    for (TBB men = rooks(view) & view.side; men != 0;) {
        builder.add(rookAttacks(popLowest(men), occ), BY_ROOK);
    }
    for (TBB men = queens(view) & view.side; men != 0;) {
        builder.add(queenAttacks(popLowest(men), occ), BY_QUEEN);
    }
    const TBB ownKings = kings(view) & view.side;
    if (ownKings != 0) {
        builder.add(KingAttacks[static_cast<u32>(lowestBit(ownKings))], BY_KING);
    }
}

void buildAttackMaps() {
    Scacchiera view = *board;
    mapOwnAttacks(view, attackMapOwn);
    flipBoard(view);
    mapOwnAttacks(view, attackMapEnemy);
}

void swapAttackMaps() {
    std::swap(attackMapOwn, attackMapEnemy);
}
