// Moves in the standard short notation of PGN and EPD.
#pragma once

#include "board/board.h"

#include <string>
#include <vector>

/// `move`, legal at `board`, as "Nf3", "exd5", "O-O", "Rae1", "e8=Q+" or "Qh7#". `board` is as before afterwards, and so
/// is SearchInfo.nodes. Needs one free record above.
[[nodiscard]] std::string sanOf(Mossa move);

/// Moves that are legal one after the other from `board` on, likewise. Needs as many free records as there are moves.
[[nodiscard]] std::vector<std::string> sanLine(const std::vector<Mossa>& moves);
