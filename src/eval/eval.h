// The static evaluation of the position at `board`. Centipawns, positive is good for the side to move.
#pragma once

#include "eval/psq.h"
#include "platform/bits.h"

#include <array>

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
/// Exchanges the contents of the two maps.
void swapAttackMaps();

/// Breakdown by term for the console: eleven terms of the side to move, then its opponent's, each in the order Pawn,
/// PST, Materiale, Bishop Pair, King Safety, Hanging Knight, Hanging Bishop, Hanging Rook, Hanging Queen, Outpost
/// Knight, Knight Superfluo. Deliberate: evaluate does not write it.
extern std::array<i32, 22> evalTerms;
