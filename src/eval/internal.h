// What the files of this folder share: the record of a pass, the terms that work on it, table building.
//
// A pass values one side's men, seen from that side. Each term is centipawns for the own side.
#pragma once

#include "board/attacks.h"
#include "board/board.h"
#include "hash/hash.h"
#include "platform/bits.h"

#include <array>

/// Brings a table printed as a player sees the board (rank 8 on top, files a to h) into square order (a1 = 0).
template <typename T>
consteval std::array<T, 64> rank8OnTop(const std::array<T, 64>& printed) {
    std::array<T, 64> table{};
    for (u32 square = 0; square < 64; ++square) {
        table[square] = printed[square ^ 56];
    }
    return table;
}

/// The squares that a side's men attack, by kind of attacker. Own men's squares count, nobody sees through anybody.
struct AttackSets {
    TBB byPawn;
    TBB byMinor;  // knights and bishops
    TBB byRook;
    TBB byQueen;
    TBB byKing;
};

[[nodiscard]] constexpr TBB attackedByMen(const AttackSets& attacks) {
    return attacks.byPawn | attacks.byMinor | attacks.byRook | attacks.byQueen;
}
[[nodiscard]] constexpr TBB attackedByAny(const AttackSets& attacks) {
    return attackedByMen(attacks) | attacks.byKing;
}

/// What follows from the pawns alone, as one side sees them, in its frame.
struct PawnSets {
    TBB outposts;        // outpost squares that are safe from enemy pawns and can be guarded by an own one
    TBB attacks;         // of own pawns
    u64 key;             // of pawnHashKeys
    u32 countIndex;      // number of own pawns, 8 for more: index of the tables by pawns
    u32 filesWithPawns;  // bit 0 for file a
    u32 halfOpenFiles;   // those with enemy pawns alone
};
struct PawnSetsOfBoth {
    PawnSets own;
    PawnSets other;  // in the other side's frame
};
/// Squares in the frame of the own side. black  whether the own side is Black. Valid until the next call.
[[nodiscard]] const PawnSetsOfBoth& pawnSets(TBB ownPawns, TBB enemyPawns, bool black);

/// What the terms of one side look at, in that side's frame. Sets without "enemy" or "all" are the own side's.
struct Pass {
    // Filled by gatherSets.
    TBB own;
    TBB enemyPawns;
    TBB allPawns;
    TBB occ;
    TBB ownPawns;
    TBB ownKnights;
    TBB ownBishops;
    TBB ownRooks;
    TBB ownQueens;
    PawnSets pawnSets;
    TBB enemyKingZone;  // squares around the enemy's king where attackers' kinds count
    i32 ownKing;        // square or noSquare; of several kings the lowest
    i32 enemyKing;
    i32 men;  // of both colours
    bool anyQueen;
    bool onlyKingsAndPawns;
    bool black;  // the own side is Black

    // Filled by pawnTerms.
    TBB passedPawns;
    i32 healthyPawns;

    // Filled by gatherSets (pawns and king) and by the terms of the pieces.
    AttackSets attacks;
    i32 zoneAttackers;  // own knights, bishops, rooks and queens that attack enemyKingZone
};

/// Takes the sets of the side to move of `view`.
[[nodiscard]] Pass gatherSets(const Scacchiera& view);

// ---- terms, in the order of a pass ----------------------------------------------------------------------------

/// Structure of the pawns alone, as the pawn hash keeps it.
struct PawnStructure {
    i16 pawnScore;
    TBB passedPawns;
    u8 healthyPawns;
};
[[nodiscard]] PawnStructure pawnStructure(TBB ownPawns, TBB enemyPawns);

/// Where the pawn hash keeps the structure of a pass.
struct PawnPlace {
    u64 key;  // the pass's own key of pawnHashKeys
    hashPawn* slot;
};
/// Term Pawn: structure, by way of the pawn hash. Sets passedPawns and healthyPawns.
[[nodiscard]] i32 pawnTerms(Pass& pass, const PawnPlace& place);
/// Bonus for sound pawns where there is nothing else.
[[nodiscard]] i32 pawnEndingTerm(const Pass& pass);
/// With few men: own king near a passed pawn, enemy king far from it. After pawnTerms.
[[nodiscard]] i32 passedPawnKingTerms(const Pass& pass);
/// Knights, with the terms Outpost Knight and Knight Superfluo. These four fill `attacks` and `zoneAttackers`.
[[nodiscard]] i32 knightTerms(Pass& pass);
/// Bishops, with the term Bishop Pair.
[[nodiscard]] i32 bishopTerms(Pass& pass);
/// Rooks. After pawnTerms.
[[nodiscard]] i32 rookTerms(Pass& pass);
[[nodiscard]] i32 queenTerms(Pass& pass);
/// Terms Hanging Knight, Bishop, Rook, Queen. Needs the attacks of both sides.
[[nodiscard]] i32 hangingTerms(const Pass& pass, const Pass& enemy);
/// Term King Safety. Needs the attacks of both sides. May set EngineOptions.kingDanger.
[[nodiscard]] i32 kingSafetyTerm(const Pass& pass, const Pass& enemy);
