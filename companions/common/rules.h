// What the laws allow in a position, with moves as text and the reason why a text is no legal move.
#pragma once

#include "board/board.h"
#include "search/search_info.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct LegalMove {
    Mossa move;
    std::string text;  // "e2e4", "e7e8q"
};

/// A position with its moves. Needs `board` when it is made and never again, so it can be asked while a search runs.
struct Standing {
    Scacchiera record;
    std::vector<LegalMove> legal;        // in the order of the core's root list
    std::vector<std::string> selfCheck;  // moves of the men that only leave the own king attacked
    bool inCheck;
};

/// The position at `board`, which has one king of each colour.
[[nodiscard]] Standing standingHere();

/// Text of a move that is to be played in `position`, without the blank of moves that do not promote.
[[nodiscard]] std::string moveTextOf(Mossa move, const Scacchiera& position);

/// Whether `text` has the form of a move: two squares and perhaps a letter.
[[nodiscard]] bool looksLikeMove(std::string_view text);

/// The legal move of this text, null if there is none. A promotion letter may be a capital.
[[nodiscard]] const LegalMove* findLegal(const Standing& standing, std::string_view text);

/// The same by the move itself.
[[nodiscard]] const LegalMove* findLegal(const Standing& standing, Mossa move);

/// The moves of a line from `board` on, as far as they are legal there. `board` is as before afterwards, and so is
/// SearchInfo.nodes, for moves count as nodes of the search.
[[nodiscard]] std::vector<LegalMove> legalLine(const PvLine& line);

/// Scores of mates: the highest is a mate on the board, each ply to it is one less.
constexpr i32 mateScore = 20000;
constexpr i32 lowestMateScore = 19000;

/// The moves to the mate that a score tells: of the side to move where the score is positive, else of its opponent.
/// Nothing if it tells none.
[[nodiscard]] std::optional<i32> mateMoves(i32 score);

/// Why `given`, which findLegal does not know, is not legal: a few words without a full stop.
[[nodiscard]] std::string whyIllegal(const Standing& standing, std::string_view given);

/// Letters of the men by real squares, a1 first; a blank for an empty square.
[[nodiscard]] std::string menOf(const Scacchiera& position);
