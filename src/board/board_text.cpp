// Moves and the board as text.
#include "board/board.h"
#include "platform/print.h"

#include <string>
#include <string_view>

static char promotionLetter(i32 promo) {
    static constexpr std::string_view letters = "  nbrq  ";
    return letters[promo & 7];
}

// `frame` is 0 with White to move and 56 with Black.
static void squareToText(char* text, i32 square, i32 frame) {
    text[0] = static_cast<char>('a' + (square & 7));
    text[1] = static_cast<char>('1' + ((square ^ frame) >> 3 & 7));
}

void moveToText(char (&text)[6], Mossa move, const Scacchiera& position) {
    const i32 frame = blackToMove(position) ? 56 : 0;
    squareToText(text, moveFrom(move), frame);
    squareToText(text + 2, moveTo(move), frame);
    // deliberate: a move without promotion ends in a blank, on the wire too
    text[4] = promotionLetter(movePromo(move));
    text[5] = '\0';
}

static constexpr std::string_view border = "  +---+---+---+---+---+---+---+---+\n";

static std::string emptyPicture() {
    std::string picture = "\n\n";
    for (char rank = '8'; rank >= '1'; --rank) {
        picture += border;
        picture += rank;
        picture += " |   |   |   |   |   |   |   |   |\n";
    }
    picture += border;
    picture += "\n    A   B   C   D   E   F   G   H\n\n";
    return picture;
}

void printBoard() {
    // Italian letters: pedone, cavallo, alfiere, torre, donna, re. Capitals, from index 8 on, are White's men.
    static constexpr std::string_view letters = " pcatdr  PCATDR ";
    Scacchiera white = *board;
    if (blackToMove(white)) {
        flipBoard(white);
    }
    std::string picture = emptyPicture();
    for (i32 square = 0; square < 64; ++square) {
        const i32 index = pieceCode(white, square) + (white.side >> square & 1 ? 8 : 0);
        picture[42 + 4 * ((square & 7) + 18 * (7 - (square >> 3)))] = letters[index];
    }
    print("%s", picture.c_str());
}
