// Examines a book: its form by its records alone, the legality of its moves by meeting its positions.
#include "book_check.h"

#include "board/board.h"
#include "board/tables.h"
#include "book/book.h"
#include "frontend/session.h"
#include "hash/random64.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <deque>
#include <span>
#include <unordered_set>

static bool keyBelow(const BookRecord& a, const BookRecord& b) {
    return a.key < b.key;
}

static bool sameMove(const BookRecord& a, const BookRecord& b) {
    return a.key == b.key && a.move == b.move;
}

static BookRecords sortedRecords(BookRecords records) {
    std::sort(records.begin(), records.end(), [](const BookRecord& a, const BookRecord& b) {
        return a.key != b.key ? a.key < b.key : a.move < b.move;
    });
    return records;
}

// `sorted` by key.
static std::span<const BookRecord> recordsOfKey(const BookRecords& sorted, u64 key) {
    const auto [first, last] =
        std::equal_range(sorted.begin(), sorted.end(), BookRecord{key, 0, 0, 0}, keyBelow);
    return {first, last};
}

static u64 countUnsorted(const BookRecords& records) {
    u64 count = 0;
    for (std::size_t i = 1; i < records.size(); ++i) {
        count += keyBelow(records[i], records[i - 1]) ? 1 : 0;
    }
    return count;
}

static void checkForm(BookReport& report, const BookRecords& sorted) {
    constexpr u32 promotionMax = 4;
    for (std::size_t i = 0; i < sorted.size();) {
        const std::size_t moves = recordsOfKey(sorted, sorted[i].key).size();
        ++report.positions;
        report.crowded += moves > static_cast<std::size_t>(bookMovesMax) ? 1 : 0;
        i += moves;
    }
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        report.badPromotions += bookMovePromotion(sorted[i].move) > promotionMax ? 1 : 0;
        report.repeated += i > 0 && sameMove(sorted[i], sorted[i - 1]) ? 1 : 0;
    }
}

// The key that the format's description gives the position at `board`: it counts an en passant file when an own pawn
// stands beside the pushed one.
static u64 publishedKey() {
    const u64 key = polyglotKey();
    if (board->epFile >= noEpFile) {
        return key;
    }
    const TBB pushed = squareBit(32 + board->epFile);
    constexpr TBB notFileA = 0xFEFEFEFEFEFEFEFE;
    constexpr TBB notFileH = 0x7F7F7F7F7F7F7F7F;
    const TBB beside = (pushed << 1 & notFileA) | (pushed >> 1 & notFileH);
    constexpr u32 epNumbers = 772;
    return (pawns(*board) & board->side & beside) != 0 ? key ^ Random64[epNumbers + board->epFile] : key;
}

// A position to look at, and whether a move of the book led there: then its replies count even if it is in no book.
struct MetPosition {
    Scacchiera position;
    bool byBookMove;
};

struct BookWalk {
    const BookRecords& sorted;
    BookReport& report;
    std::deque<MetPosition> waiting;
    std::unordered_set<u64> seen;       // keys of positions in the book
    std::unordered_set<u64> seenAside;  // keys of positions that only a book move leads to
};

static void meet(BookWalk& walk, bool byBookMove) {
    const u64 key = polyglotKey();
    const bool inBook = !recordsOfKey(walk.sorted, key).empty();
    if (inBook ? walk.seen.insert(key).second : byBookMove && walk.seenAside.insert(key).second) {
        walk.waiting.push_back({*board, byBookMove});
    }
    const u64 published = publishedKey();
    if (published != key && !inBook && !recordsOfKey(walk.sorted, published).empty() &&
        walk.seenAside.insert(published).second) {
        ++walk.report.publishedKeysOnly;
    }
}

// Book moves of the position at `board` by their text, as the engine would play them.
static bool isBookMove(std::span<const BookRecord> records, const char (&moveText)[6]) {
    return std::any_of(records.begin(), records.end(), [&moveText](const BookRecord& record) {
        char text[6];
        bookMoveText(text, record.move);
        return std::strcmp(text, moveText) == 0;
    });
}

// moveToText without the blank that stands for no promotion.
static void bareMoveText(char (&text)[6], Mossa move) {
    moveToText(text, move, *board);
    if (text[4] == ' ') {
        text[4] = '\0';
    }
}

static void countIllegal(BookReport& report, std::span<const BookRecord> records, const MoveArray& moves,
                         i32 count) {
    for (const BookRecord& record : records) {
        char text[6];
        bookMoveText(text, record.move);
        const bool legal = std::any_of(moves.begin(), moves.begin() + count, [&text](Mossa move) {
            char moveText[6];
            bareMoveText(moveText, move);
            return std::strcmp(text, moveText) == 0;
        });
        if (!legal && report.illegal++ == 0) {
            char line[32];
            std::snprintf(line, sizeof line, "%016" PRIx64 " %s", record.key, text);
            report.firstIllegal = line;
        }
    }
}

static void visit(BookWalk& walk, const MetPosition& met) {
    newGame();
    *board = met.position;
    const std::span<const BookRecord> records = recordsOfKey(walk.sorted, polyglotKey());
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    if (!records.empty()) {
        ++walk.report.reachedPositions;
        walk.report.reachedRecords += records.size();
        countIllegal(walk.report, records, moves, count);
    }
    for (i32 i = 0; i < count; ++i) {
        char text[6];
        bareMoveText(text, moves[i]);
        const bool byBookMove = isBookMove(records, text);
        makeMove(moves[i]);
        meet(walk, byBookMove);
        --board;
    }
}

static void checkMoves(BookReport& report, const BookRecords& sorted) {
    BookWalk walk = {sorted, report, {}, {}, {}};
    newGame();
    meet(walk, true);
    while (!walk.waiting.empty()) {
        const MetPosition met = walk.waiting.front();
        walk.waiting.pop_front();
        visit(walk, met);
    }
    newGame();
}

BookReport checkBook(const LoadedBook& book) {
    BookReport report{};
    report.records = book.records.size();
    report.spareBytes = book.spareBytes;
    report.unsorted = countUnsorted(book.records);
    const BookRecords sorted = sortedRecords(book.records);
    checkForm(report, sorted);
    checkMoves(report, sorted);
    return report;
}

bool isSound(const BookReport& report) {
    return report.records > 0 && report.spareBytes == 0 && report.unsorted == 0 && report.repeated == 0 &&
           report.crowded == 0 && report.badPromotions == 0 && report.illegal == 0;
}

static void printFault(u64 count, const char* what) {
    if (count > 0) {
        std::printf("fault: %" PRIu64 " %s\n", count, what);
    }
}

void printReport(const BookReport& report) {
    std::printf("%" PRIu64 " records of %" PRIu64 " positions\n", report.records, report.positions);
    std::printf("%" PRIu64 " positions with %" PRIu64 " records met from the start position\n",
                report.reachedPositions, report.reachedRecords);
    if (report.publishedKeysOnly > 0) {
        std::printf("note: %" PRIu64
                    " positions stand under an en passant key that the engine does not look up\n",
                    report.publishedKeysOnly);
    }
    printFault(report.records == 0 ? 1 : 0, "book without a record");
    printFault(report.spareBytes, "bytes behind the last whole record");
    printFault(report.unsorted, "records below the one before: probes will miss moves");
    printFault(report.repeated, "records that repeat a move");
    printFault(report.crowded, "positions with more moves than the engine serves");
    printFault(report.badPromotions, "moves with a promotion number that means nothing");
    printFault(report.illegal, "moves that are not legal in their position");
    if (report.illegal > 0) {
        std::printf("the first of them: %s\n", report.firstIllegal.c_str());
    }
    std::printf("%s\n", isSound(report) ? "the book is sound" : "the book is faulty");
}
