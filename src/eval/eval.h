// The static evaluation of the position at `board`. Centipawns, positive is good for the side to move.
#pragma once

#include "eval/psq.h"
#include "platform/bits.h"

#include <array>
#include <cstddef>

/// Static value of the position, 16 bits. May set EngineOptions.kingDanger, never clears it; reads and fills the pawn
/// hash, so the order and number of calls can show in later values. The record at `board` is as before afterwards.
[[nodiscard]] i16 evaluate();

/// Non-zero if somebody can still win, zero for a dead draw. Deliberate: a lone minor piece against a king on the rim
/// is not called drawn.
[[nodiscard]] i32 sufficientMaterial();

/// One byte a real square: low three bits count the attackers, 8 pawn, 16 knight or bishop, 32 rook, 64 queen,
/// 128 king. Valid only inside the call of evaluate that built them.
extern std::array<u8, 64> attackMapOwn;
extern std::array<u8, 64> attackMapEnemy;
/// Fills both maps for the position at `board`, which is as before afterwards.
void buildAttackMaps();
/// Exchanges the contents of the two maps. For whoever works on a pass with them; evaluate needs no exchange.
void swapAttackMaps();

/// The places of the terms in each half of evalTerms.
enum EvalTerm : u32 {
    termPawn,
    termPst,
    termMaterial,
    termBishopPair,
    termKingSafety,
    termHangingKnight,
    termHangingBishop,
    termHangingRook,
    termHangingQueen,
    termOutpostKnight,
    termKnightSuperfluo,
    evalTermCount,
};

/// Breakdown by term for the console: the terms of the side to move, then its opponent's. Deliberate: evaluate does not
/// write it.
extern std::array<i32, std::size_t{2} * evalTermCount> evalTerms;
