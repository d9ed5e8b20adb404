// The random positions that are looked up in the endgame tables.
#pragma once

#include "board/board.h"
#include "frontend/session.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

constexpr std::array<const char*, 5> smallSet = {"KNNk", "KNkn", "KBkb", "KBkn", "KRkr"};
constexpr std::array<const char*, 30> fullSet = {
    "KQQk", "KQRk", "KQBk", "KQNk", "KQPk", "KRRk", "KRBk", "KRNk", "KRPk", "KBBk",
    "KBNk", "KBPk", "KNNk", "KNPk", "KPPk", "KQkq", "KQkr", "KQkb", "KQkn", "KQkp",
    "KRkr", "KRkb", "KRkn", "KRkp", "KBkb", "KBkn", "KBkp", "KNkn", "KNkp", "KPkp"};

inline u64 randomState = 0;

inline u64 nextRandom() {
    randomState += 0x9E3779B97F4A7C15ULL;
    u64 z = randomState;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

inline std::string randomFen(const char* men) {
    std::array<char, 64> squares{};
    for (; *men != '\0'; ++men) {
        u64 square = nextRandom() % 64;
        while (squares[square] != '\0') {
            square = nextRandom() % 64;
        }
        squares[square] = *men;
    }
    std::string fen;
    for (u32 i = 0; i < 64; ++i) {
        fen += squares[i] == '\0' ? '1' : squares[i];
        fen += i % 8 == 7 && i != 63 ? "/" : "";
    }
    return fen + (nextRandom() % 2 == 0 ? " w" : " b") + " - -";
}

// A position that the tables hold and that may stand in a game.
inline bool isUsable() {
    constexpr TBB endRanks = 0xFF000000000000FFULL;
    return leftInCheck() == 0 && (pawns(*board) & endRanks) == 0;
}

template <std::size_t Count>
std::vector<Scacchiera> makePositions(const std::array<const char*, Count>& set, i32 eachCount) {
    randomState = 0;
    std::vector<Scacchiera> positions;
    for (const char* men : set) {
        for (i32 i = 0; i < eachCount;) {
            newGame();
            if (fenToBoard(randomFen(men).c_str()) == 1 && isUsable()) {
                positions.push_back(*board);
                ++i;
            }
        }
    }
    // neighbours are of different tables
    for (std::size_t i = positions.size() - 1; i > 0; --i) {
        std::swap(positions[i], positions[nextRandom() % (i + 1)]);
    }
    return positions;
}

using Probe = i32 (*)(i32& success);

// Sum of all values; -1000000 more for each probe that fails.
inline i64 sumOfValues(const std::vector<Scacchiera>& positions, Probe probe) {
    newGame();
    i64 sum = 0;
    for (const Scacchiera& position : positions) {
        *board = position;
        i32 success = 0;
        sum += probe(success) - (success == 0 ? 1'000'000 : 0);
    }
    return sum;
}
