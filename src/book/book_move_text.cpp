// The text of a book record's 16-bit move, real squares.
#include "book/book.h"
#include "book/book_record.h"

#include <cstring>
#include <string_view>

static char promotionLetter(u16 move) {
    constexpr std::string_view letters = " nbrq";
    const u32 promotion = bookMovePromotion(move);
    return promotion != 0 && promotion < letters.size() ? letters[promotion] : '\0';
}

// Books write castling as the king taking its own rook. Deliberate: by the squares alone, whatever stands there.
static void rewriteCastling(char (&text)[6]) {
    constexpr std::array<std::array<const char*, 2>, 4> castlings = {
        {{"e1h1", "e1g1"}, {"e1a1", "e1c1"}, {"e8h8", "e8g8"}, {"e8a8", "e8c8"}}};
    for (const auto& [written, meant] : castlings) {
        if (std::strcmp(text, written) == 0) {
            std::strcpy(text, meant);
            return;
        }
    }
}

void bookMoveText(char (&text)[6], u16 move) {
    const auto file = [](i32 square) { return static_cast<char>('a' + (square & 7)); };
    const auto rank = [](i32 square) { return static_cast<char>('1' + (square >> 3 & 7)); };
    const i32 from = move >> 6;
    const i32 to = move;
    text[0] = file(from);
    text[1] = rank(from);
    text[2] = file(to);
    text[3] = rank(to);
    text[4] = promotionLetter(move);
    text[5] = '\0';
    rewriteCastling(text);
}
