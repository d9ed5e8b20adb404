// Term King Safety: the pawns before the own king, and the enemy's attacks on the squares around it.
#include "eval/eval.h"
#include "eval/internal.h"
#include "eval/masks.h"
#include "frontend/frontend.h"

constexpr i32 shieldFirstRow = 4;   // centipawns a missing pawn right in front
constexpr i32 shieldSecondRow = 2;  // centipawns a missing pawn one rank further
constexpr i32 alarmingDanger = 12;  // centipawns; above it the search is told

// Danger units a king starts with where it stands, owner's frame, printed rank 8 on top. Hand-set. Deliberate: a3
// and h3 differ.
constexpr std::array<i32, 64> kingExposure = rank8OnTop<i32>({
    4, 4, 4, 4, 4, 4, 4, 4,  // 8
    4, 4, 4, 4, 4, 4, 4, 4,  // 7
    4, 4, 4, 4, 4, 4, 4, 4,  // 6
    4, 4, 4, 4, 4, 4, 4, 4,  // 5
    4, 4, 4, 4, 4, 4, 4, 4,  // 4
    4, 3, 3, 3, 3, 3, 3, 3,  // 3
    2, 1, 1, 1, 1, 1, 1, 2,  // 2
    2, 0, 0, 0, 0, 0, 0, 2,  // 1
});

// Danger units by the kinds of attacker together: 1 pawn, 2 knight or bishop, 4 rook, 8 queen, 16 king.
constexpr std::array<i32, 32> attackerPattern = {
    0, 0, 0, 0, 0, 0, 1, 1, 0, 1, 2, 2, 2, 3, 3, 3,  // without the king
    0, 0, 0, 0, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3,  // with the king
};

// Centipawns by danger units.
constexpr std::array<i32, 40> kingDangerTable = {
    0,   2,   3,   6,   12,  18,  25,  37,  50,  75,   // 0 to 9
    100, 125, 150, 175, 200, 225, 250, 275, 300, 325,  // 10 to 19
    350, 375, 400, 425, 450, 475, 500, 525, 550, 575,  // 20 to 29
    600, 600, 600, 600, 600, 600, 600, 600, 600, 600,  // 30 to 39
};

// Two pawns and a king at most attack a square besides the pieces, so with fewer pieces than this around the king no
// square there has the eight attackers that would carry into the flags of an attack map.
constexpr i32 piecesForCarry = 5;

static i32 shieldCost(const Pass& pass, u32 king) {
    const i32 near = popCount(pass.ownPawns & kingZoneFront1[king]);
    const i32 far = popCount(pass.ownPawns & kingZoneFront2[king]);
    return shieldFirstRow * (3 - near) + shieldSecondRow * (3 - far);
}

// The kinds of attacker as the maps have them, carries included.
static u32 attackerKindsByMap(const Pass& pass, TBB zone) {
    buildAttackMaps();
    const bool ownIsToMove = pass.black == blackToMove(*board);
    const std::array<u8, 64>& enemyMap = ownIsToMove ? attackMapEnemy : attackMapOwn;
    u32 flags = 0;
    while (zone != 0) {
        flags |= enemyMap[static_cast<u32>(popLowest(zone)) ^ (pass.black ? 56U : 0U)];
    }
    return flags >> 3;
}

// Index into attackerPattern. `zone` in the enemy's frame.
static u32 attackerKindsBySet(const AttackSets& attacks, TBB zone) {
    return ((attacks.byPawn & zone) != 0 ? 1U : 0U) | ((attacks.byMinor & zone) != 0 ? 2U : 0U) |
           ((attacks.byRook & zone) != 0 ? 4U : 0U) | ((attacks.byQueen & zone) != 0 ? 8U : 0U) |
           ((attacks.byKing & zone) != 0 ? 16U : 0U);
}

static u32 attackerKinds(const Pass& pass, const Pass& enemy, TBB zone) {
    return enemy.zoneAttackers < piecesForCarry ? attackerKindsBySet(enemy.attacks, byteSwap(zone))
                                                : attackerKindsByMap(pass, zone);
}

// One unit for each attacked square next to the king, two where the king is its only defender.
static i32 attackedSquareUnits(const Pass& pass, const Pass& enemy, TBB squaresAround) {
    const TBB attacked = squaresAround & byteSwap(attackedByAny(enemy.attacks));
    const TBB heldByKingAlone = pass.attacks.byKing & ~attackedByMen(pass.attacks);
    return popCount(attacked) + popCount(attacked & heldByKingAlone);
}

static i32 startUnits(const Pass& enemy, u32 king) {
    const i32 enemyPieces = popCount(enemy.ownKnights | enemy.ownBishops | enemy.ownRooks);
    return enemyPieces >= 2 ? kingExposure[king] : 0;
}

i32 kingSafetyTerm(const Pass& pass, const Pass& enemy) {
    if (pass.ownKing == noSquare) {
        return 0;
    }
    const u32 king = static_cast<u32>(pass.ownKing);
    const TBB squaresAround = KingAttacks[king];
    const i32 units = startUnits(enemy, king) + attackedSquareUnits(pass, enemy, squaresAround);
    const u32 kinds = attackerKinds(pass, enemy, kingZone[king]);
    const i32 danger = kingDangerTable[static_cast<u32>(attackerPattern[kinds] + units)];
    if (danger > alarmingDanger) {
        EngineOptions.kingDanger = 1;
    }
    return -shieldCost(pass, king) - danger;
}
