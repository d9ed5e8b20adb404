// What the files of this folder share, and what their tests look into.
#pragma once

#include "board/board.h"

// ---- the stored values of a table -----------------------------------------------------------------------------

/// Win, draw or loss as a table stores it for the position at `board`, no captures looked at. `success` becomes 0 when
/// there is no table; two bare kings are a draw without any.
[[nodiscard]] i32 probeWdlTable(i32& success);

/// The stored distance, not negative, of the position at `board`, whose value `wdl` (-2 to 2, not 0) is known.
/// `success` becomes 0 when there is no table and -1 when the table stores the other side to move.
[[nodiscard]] i32 probeDtzTable(i32 wdl, i32& success);

/// Whether a table can hold the position: one king a side and not next to each other, at most six men, no pawn on the
/// first or last rank. Only such positions are ever looked up.
[[nodiscard]] bool tablesCanHold(const Scacchiera& b);

// ---- values with captures looked at ---------------------------------------------------------------------------

/// Win, draw or loss between the bounds of the position at `board`, en passant left out. `success` becomes 0 if the
/// tables do not know, 2 if a capture decides (the distance is then 1 or 101), else 1.
[[nodiscard]] i32 probeCaptures(i32 alpha, i32 beta, i32& success);

/// The distance to which a win or loss by the next move comes, by WDL + 2.
constexpr i32 wdlToDtz[5] = {-1, -101, 0, 101, 1};
