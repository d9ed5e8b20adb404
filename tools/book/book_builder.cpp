// From counted moves to records: weights, order, limits.
#include "book_builder.h"

#include "book/book.h"
#include "move_reader.h"

#include <algorithm>

constexpr u64 weightMax = 65535;

void countMove(BookBuilder& builder, Mossa move, u64 times) {
    if (times > 0) {
        builder.countOfMove[{polyglotKey(), bookMoveOf(move)}] += times;
    }
}

struct CountedMove {
    u16 move;
    u64 count;
};

// `count` as it is if all counts of the position fit, else its share of the highest; never 0 for a move that counts.
static u16 weightOf(u64 count, u64 highest) {
    if (highest <= weightMax) {
        return static_cast<u16>(count);
    }
    const double share = static_cast<double>(count) / static_cast<double>(highest);
    const u64 scaled = static_cast<u64>(share * static_cast<double>(weightMax));
    return static_cast<u16>(std::clamp<u64>(scaled, count > 0 ? 1 : 0, weightMax));
}

// Adds the records of one position; keeps the heaviest if there are too many.
static void addPosition(BookRecords& records, u64 key, std::vector<CountedMove>& moves) {
    std::stable_sort(moves.begin(), moves.end(),
                     [](const CountedMove& a, const CountedMove& b) { return a.count > b.count; });
    if (moves.size() > static_cast<std::size_t>(bookMovesMax)) {
        moves.resize(bookMovesMax);
    }
    for (const CountedMove& counted : moves) {
        records.push_back({key, counted.move, weightOf(counted.count, moves.front().count), 0});
    }
}

BookRecords recordsOf(const BookBuilder& builder, u64 minCount) {
    BookRecords records;
    std::vector<CountedMove> moves;
    for (auto next = builder.countOfMove.begin(); next != builder.countOfMove.end();) {
        const u64 key = next->first.first;
        moves.clear();
        for (; next != builder.countOfMove.end() && next->first.first == key; ++next) {
            if (next->second >= minCount) {
                moves.push_back({next->first.second, next->second});
            }
        }
        addPosition(records, key, moves);
    }
    return records;
}
