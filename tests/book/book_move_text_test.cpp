// The text of a book record's move.
#include "book/book.h"
#include "book_files.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

static std::string textOf(u16 move) {
    char text[6];
    std::memset(text, '*', sizeof text);
    bookMoveText(text, move);
    EXPECT_LE(strnlen(text, sizeof text), 5U);
    return text;
}

struct MoveCase {
    const char* name;
    u16 move;
    const char* text;
};

constexpr MoveCase moveCases[] = {
    {"a move", 0x031C, "e2e4"},
    {"the lowest squares", 0x0000, "a1a1"},
    {"the highest squares", 0x0FFF, "h8h8"},
    {"no blank and no letter without promotion", bookMove("g8f6"), "g8f6"},
    {"knight", bookMove("e7e8", 1), "e7e8n"},
    {"bishop", bookMove("e7e8", 2), "e7e8b"},
    {"rook", bookMove("e7e8", 3), "e7e8r"},
    {"queen", bookMove("e7e8", 4), "e7e8q"},
    {"promotion 5 has no letter", bookMove("e7e8", 5), "e7e8"},
    {"promotion 6 has no letter", bookMove("e7e8", 6), "e7e8"},
    {"promotion 7 has no letter", bookMove("e7e8", 7), "e7e8"},
    {"the highest bit means nothing", 0x8000 | 0x031C, "e2e4"},
    {"White castles short", bookMove("e1h1"), "e1g1"},
    {"White castles long", bookMove("e1a1"), "e1c1"},
    {"Black castles short", bookMove("e8h8"), "e8g8"},
    {"Black castles long", bookMove("e8a8"), "e8c8"},
    {"a king's own castling move stays", bookMove("e1g1"), "e1g1"},
    {"the reverse is no castling", bookMove("h1e1"), "h1e1"},
    {"with a promotion letter it is no castling", bookMove("e1h1", 4), "e1h1q"},
    {"with a promotion without letter it is castling", bookMove("e1h1", 6), "e1g1"},
};

TEST(BookMoveText, IsWrittenByTheseRules) {
    for (const MoveCase& c : moveCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(textOf(c.move), c.text);
    }
}

TEST(BookMoveText, NeverWritesBeyondTheText) {
    for (u32 move = 0; move <= 0xFFFF; ++move) {
        const std::string text = textOf(static_cast<u16>(move));
        ASSERT_TRUE(text.size() == 4 || text.size() == 5) << move;
    }
}

TEST(BookRecordFormat, IsBigEndian) {
    const BookRecord record = {0x0102030405060708, 0x090A, 0x0B0C, 0x0D0E0F10};
    const BookRecordBytes bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    EXPECT_EQ(encodeBookRecord(record), bytes);
    const BookRecord back = decodeBookRecord(bytes);
    EXPECT_EQ(back.key, record.key);
    EXPECT_EQ(back.move, record.move);
    EXPECT_EQ(back.weight, record.weight);
    EXPECT_EQ(back.learn, record.learn);
}
