// The old way of setting up a position: men put on squares one by one.
#pragma once

#include "rules.h"

#include <string>
#include <string_view>

struct EditMode {
    bool on = false;
    bool white = true;  // colour of the men that are put down
    bool blackToMove = false;
    std::string men{};  // 64 letters, a1 first
};

/// Begins with the men of `position`.
void beginEdit(EditMode& edit, const Scacchiera& position);

/// Deals with a line of the mode: false at its end, when `fenOf` tells the position.
[[nodiscard]] bool takeEditLine(EditMode& edit, std::string_view line);

/// The position: castling is possible where king and rook stand at home, en passant never.
[[nodiscard]] std::string fenOf(const EditMode& edit);
