// The index of a position in a table: its men, in the table's order and folded by the board's symmetries, as one mixed
// number of combinations. Squares are the table's own, a1 = 0.
#include "tablebase/internal.h"

#include <algorithm>

// ---- tables by rule -------------------------------------------------------------------------------------------

static constexpr i32 fileOf(i32 square) {
    return square & 7;
}
static constexpr i32 rankOf(i32 square) {
    return square >> 3;
}

static constexpr std::array<u8, 8> foldFile = {0, 1, 2, 3, 3, 2, 1, 0};

// 0 on the diagonal a1-h8, 1 above it, -1 below.
static constexpr i32 diagonalSide(i32 square) {
    return (rankOf(square) > fileOf(square) ? 1 : 0) - (rankOf(square) < fileOf(square) ? 1 : 0);
}

// Rank and file exchanged.
static constexpr i32 diagonalMirror(i32 square) {
    return fileOf(square) * 8 + rankOf(square);
}

using SquareNumbers = std::array<u8, 64>;

template <typename Rule>
static consteval SquareNumbers bySquare(Rule rule) {
    SquareNumbers table{};
    for (i32 square = 0; square < 64; ++square) {
        table[square] = static_cast<u8>(rule(square));
    }
    return table;
}

// The squares to which a first man is folded, by class: off the diagonal a1-h8, then on it.
static constexpr std::array<u8, 10> triangleSquares = {1, 2, 3, 10, 11, 19, 0, 9, 18, 27};

static constexpr SquareNumbers triangleClass = bySquare([](i32 square) {
    const i32 file = foldFile[fileOf(square)];
    const i32 rank = foldFile[rankOf(square)];
    const i32 folded = std::min(file, rank) * 8 + std::max(file, rank);
    return std::find(triangleSquares.begin(), triangleSquares.end(), folded) - triangleSquares.begin();
});
static_assert(triangleClass[0] == 6 && triangleClass[4] == 2 && triangleClass[26] == 5 &&
              triangleClass[36] == 9);

// Below the diagonal 0 to 27 by rising square, above it as the mirror, on it 28 to 35.
static constexpr SquareNumbers lowerIndex = bySquare([](i32 square) {
    if (diagonalSide(square) == 0) {
        return 28 + fileOf(square);
    }
    const i32 lower = diagonalSide(square) < 0 ? square : diagonalMirror(square);
    i32 index = 0;
    for (i32 s = 0; s < lower; ++s) {
        index += diagonalSide(s) < 0 ? 1 : 0;
    }
    return index;
});
static_assert(lowerIndex[7] == 6 && lowerIndex[10] == 7 && lowerIndex[55] == 27 && lowerIndex[62] == 27);

// Along the two long diagonals: a1 to h8, then h1 to a8.
static constexpr SquareNumbers diagonalIndex = bySquare([](i32 square) {
    if (fileOf(square) == rankOf(square)) {
        return fileOf(square);
    }
    return fileOf(square) + rankOf(square) == 7 ? 8 + rankOf(square) : 0;
});
static_assert(diagonalIndex[63] == 7 && diagonalIndex[7] == 8 && diagonalIndex[56] == 15);

static constexpr bool pawnMayStand(i32 square) {
    return rankOf(square) >= 1 && rankOf(square) <= 6;
}

// The pawn with the lowest number leads.
static constexpr SquareNumbers leadPawnOrder = bySquare(
    [](i32 square) { return pawnMayStand(square) ? 6 * foldFile[fileOf(square)] + rankOf(square) - 1 : 0; });
static_assert(leadPawnOrder[8] == 0 && leadPawnOrder[48] == 5 && leadPawnOrder[51] == 23 &&
              leadPawnOrder[15] == 0);

// 47 on a2 down to 0 on e7: outer files first, each pair of files upwards, the left one of a pair higher.
static constexpr SquareNumbers pawnRankOrder = bySquare([](i32 square) {
    if (!pawnMayStand(square)) {
        return 0;
    }
    const i32 rightOfPair = fileOf(square) >= 4 ? 1 : 0;
    return 47 - 12 * foldFile[fileOf(square)] - 2 * (rankOf(square) - 1) - rightOfPair;
});
static_assert(pawnRankOrder[8] == 47 && pawnRankOrder[15] == 46 && pawnRankOrder[28] == 6 &&
              pawnRankOrder[52] == 0);

// [k][n]: ways to pick k + 1 of n.
static constexpr std::array<std::array<i32, 64>, 5> binomial = [] {
    std::array<std::array<i32, 64>, 5> table{};
    for (i32 n = 1; n < 64; ++n) {
        table[0][n] = n;
        for (i32 k = 1; k < 5; ++k) {
            table[k][n] = table[k][n - 1] + table[k - 1][n - 1];
        }
    }
    return table;
}();
static_assert(binomial[1][10] == 45 && binomial[4][5] == 1 && binomial[3][63] == 595665);

// [class of the first king][square of the second]: the pair's number, -1 if the two touch.
using KingPairs = std::array<std::array<i16, 64>, 10>;
constexpr i32 kingPairCount = 462;

static constexpr bool squaresTouch(i32 a, i32 b) {
    const i32 files = fileOf(a) - fileOf(b);
    const i32 ranks = rankOf(a) - rankOf(b);
    return files * files <= 1 && ranks * ranks <= 1;
}

static constexpr KingPairs kingPairIndex = [] {
    KingPairs table{};
    for (auto& row : table) {
        row.fill(-1);
    }
    i32 next = 0;
    const auto layPass = [&](i32 firstClass, i32 endClass, auto belongs) {
        for (i32 king = firstClass; king < endClass; ++king) {
            for (i32 square = 0; square < 64; ++square) {
                if (belongs(square) && !squaresTouch(triangleSquares[king], square)) {
                    table[king][square] = static_cast<i16>(next++);
                }
            }
        }
    };
    layPass(0, 6, [](i32) { return true; });
    layPass(6, 10, [](i32 square) { return diagonalSide(square) < 0; });
    layPass(6, 10, [](i32 square) { return diagonalSide(square) == 0; });
    return table;
}();
static_assert(kingPairIndex[9][63] == kingPairCount - 1);

// By headKind: placements of three unlike men, (not used), of two kings.
static constexpr std::array<u64, 3> headCount = {31332, 28056, kingPairCount};

// Row i is for i + 1 leading pawns: [leadPawnOrder] where its placements start, counted within the file of the pawn
// that leads; and how many there are by that file.
struct LeadPawnTables {
    std::array<std::array<i32, 24>, 5> index;
    std::array<std::array<i32, 4>, 5> count;
};

static constexpr LeadPawnTables leadPawns = [] {
    LeadPawnTables tables{};
    for (i32 i = 0; i < 5; ++i) {
        for (i32 order = 0; order < 24; ++order) {
            const i32 file = order / 6;
            const i32 square = (order % 6 + 1) * 8 + file;
            tables.index[i][order] = tables.count[i][file];
            tables.count[i][file] += i == 0 ? 1 : binomial[i - 1][pawnRankOrder[square]];
        }
    }
    return tables;
}();
static_assert(leadPawns.count[0][3] == 6 && leadPawns.count[1][0] == 47 + 45 + 43 + 41 + 39 + 37);

// ---- groups and factors ---------------------------------------------------------------------------------------

// Groups of like men from place `i` on.
static void setGroupsFrom(const TableMaterial& material, TableSide& side, i32 i) {
    while (i < material.num) {
        i32 end = i + 1;
        while (end < material.num && side.pieces[end] == side.pieces[i]) {
            ++end;
        }
        side.groupSize[i] = static_cast<u8>(end - i);
        i = end;
    }
}

void setGroupsPiece(const TableMaterial& material, TableSide& side) {
    side.groupSize.fill(0);
    side.groupSize[0] = material.headKind == 0 ? 3 : 2;
    setGroupsFrom(material, side, side.groupSize[0]);
}

void setGroupsPawn(const TableMaterial& material, TableSide& side) {
    side.groupSize.fill(0);
    side.groupSize[0] = material.pawns[0];
    if (material.pawns[1] != 0) {
        side.groupSize[material.pawns[0]] = material.pawns[1];
    }
    setGroupsFrom(material, side, material.pawns[0] + material.pawns[1]);
}

static u64 waysToPick(i32 count, i32 squares) {
    return static_cast<u64>(binomial[count - 1][squares]);
}

// Gives the next group of ordinary men its factor, and returns the factor of the group after it.
static u64 factorOfGroup(TableSide& side, u64 factor, i32& place, i32& freeSquares) {
    const i32 size = side.groupSize[place];
    side.groupFactor[place] = factor;
    factor *= waysToPick(size, freeSquares);
    freeSquares -= size;
    place += size;
    return factor;
}

u64 computeFactorsPiece(const TableMaterial& material, TableSide& side, i32 pivotOrder) {
    i32 place = side.groupSize[0];
    i32 freeSquares = 64 - place;
    u64 factor = 1;
    for (i32 k = 0; place < material.num || k == pivotOrder; ++k) {
        if (k == pivotOrder) {
            side.groupFactor[0] = factor;
            factor *= headCount[material.headKind];
        } else {
            factor = factorOfGroup(side, factor, place, freeSquares);
        }
    }
    return factor;
}

u64 computeFactorsPawn(const TableMaterial& material, TableSide& side, i32 pivotOrder, i32 pawnOrder,
                       i32 file) {
    const i32 leading = side.groupSize[0];
    i32 place = leading + (pawnOrder < 15 ? side.groupSize[leading] : 0);
    i32 freeSquares = 64 - place;
    u64 factor = 1;
    for (i32 k = 0; place < material.num || k == pivotOrder || k == pawnOrder; ++k) {
        if (k == pivotOrder) {
            side.groupFactor[0] = factor;
            factor *= static_cast<u64>(leadPawns.count[leading - 1][file]);
        } else if (k == pawnOrder) {
            side.groupFactor[leading] = factor;
            factor *= waysToPick(side.groupSize[leading], 48 - leading);
        } else {
            factor = factorOfGroup(side, factor, place, freeSquares);
        }
    }
    return factor;
}

// ---- the index ------------------------------------------------------------------------------------------------

static void flipSquares(TablePos& pos, i32 num, i32 bits) {
    for (i32 i = 0; i < num; ++i) {
        pos[i] ^= bits;
    }
}

// How many of the squares before place `end` are below `square`.
static i32 countBelow(const TablePos& pos, i32 end, i32 square) {
    i32 count = 0;
    for (i32 i = 0; i < end; ++i) {
        count += pos[i] < square ? 1 : 0;
    }
    return count;
}

// Exchange sort of the places `first` to `end` - 1.
template <typename Before>
static void sortPlaces(TablePos& pos, i32 first, i32 end, Before before) {
    for (i32 i = first; i < end; ++i) {
        for (i32 j = i + 1; j < end; ++j) {
            if (before(pos[j], pos[i])) {
                std::swap(pos[i], pos[j]);
            }
        }
    }
}

// Number of the squares at places `first` to `end` - 1, like men, among all combinations of the squares that the men
// before them leave free. `lowest` is the first square they may stand on.
static i32 combinationOf(TablePos& pos, i32 first, i32 end, i32 lowest) {
    sortPlaces(pos, first, end, [](i32 a, i32 b) { return a < b; });
    i32 number = 0;
    for (i32 m = first; m < end; ++m) {
        number += binomial[m - first][pos[m] - countBelow(pos, first, pos[m]) - lowest];
    }
    return number;
}

static u64 indexOfGroups(const TableMaterial& material, const TableSide& side, TablePos& pos, i32 place) {
    u64 index = 0;
    while (place < material.num) {
        const i32 end = place + side.groupSize[place];
        index += static_cast<u64>(combinationOf(pos, place, end, 0)) * side.groupFactor[place];
        place = end;
    }
    return index;
}

// Mirrors along the diagonal if the first man off it, among the head's, stands above it.
static void foldAtDiagonal(TablePos& pos, i32 num, i32 headSize) {
    for (i32 i = 0; i < headSize; ++i) {
        const i32 side = diagonalSide(pos[i]);
        if (side > 0) {
            for (i32 m = 0; m < num; ++m) {
                pos[m] = diagonalMirror(pos[m]);
            }
        }
        if (side != 0) {
            return;
        }
    }
}

// Number of the placement of three unlike men: the first off the diagonal; the second; the third; all on it.
static i32 indexOfThree(const TablePos& pos) {
    const i32 i = pos[1] > pos[0] ? 1 : 0;
    const i32 j = countBelow(pos, 2, pos[2]);
    if (diagonalSide(pos[0]) != 0) {
        return triangleClass[pos[0]] * 3906 + (pos[1] - i) * 62 + pos[2] - j;
    }
    if (diagonalSide(pos[1]) != 0) {
        return 23436 + diagonalIndex[pos[0]] * 1736 + lowerIndex[pos[1]] * 62 + pos[2] - j;
    }
    if (diagonalSide(pos[2]) != 0) {
        return 30380 + diagonalIndex[pos[0]] * 196 + (diagonalIndex[pos[1]] - i) * 28 + lowerIndex[pos[2]];
    }
    return 31164 + diagonalIndex[pos[0]] * 42 + (diagonalIndex[pos[1]] - i) * 6 + diagonalIndex[pos[2]] - j;
}

u64 indexPieces(const TableMaterial& material, const TableSide& side, TablePos& pos) {
    const i32 num = material.num;
    flipSquares(pos, num, ((pos[0] & 4) != 0 ? 7 : 0) ^ ((pos[0] & 32) != 0 ? 56 : 0));
    const i32 headSize = material.headKind == 0 ? 3 : 2;
    foldAtDiagonal(pos, num, headSize);
    const i32 head = headSize == 3 ? indexOfThree(pos) : kingPairIndex[triangleClass[pos[0]]][pos[1]];
    return static_cast<u64>(head) * side.groupFactor[0] + indexOfGroups(material, side, pos, headSize);
}

i32 leadPawnFile(const TableMaterial& material, TablePos& pos) {
    for (i32 i = 1; i < material.pawns[0]; ++i) {
        if (leadPawnOrder[pos[0]] > leadPawnOrder[pos[i]]) {
            std::swap(pos[0], pos[i]);
        }
    }
    return foldFile[fileOf(pos[0])];
}

static i32 indexOfLeadingPawns(TablePos& pos, i32 count) {
    sortPlaces(pos, 1, count, [](i32 a, i32 b) { return pawnRankOrder[a] > pawnRankOrder[b]; });
    const i32 last = count - 1;
    i32 index = leadPawns.index[last][leadPawnOrder[pos[0]]];
    for (i32 i = last; i >= 1; --i) {
        index += binomial[last - i][pawnRankOrder[pos[i]]];
    }
    return index;
}

u64 indexPawns(const TableMaterial& material, const TableSide& side, TablePos& pos) {
    if ((pos[0] & 4) != 0) {
        flipSquares(pos, material.num, 7);
    }
    const i32 leading = material.pawns[0];
    const i32 allPawns = leading + material.pawns[1];
    u64 index = static_cast<u64>(indexOfLeadingPawns(pos, leading)) * side.groupFactor[0];
    if (allPawns != leading) {
        index += static_cast<u64>(combinationOf(pos, leading, allPawns, 8)) * side.groupFactor[leading];
    }
    return index + indexOfGroups(material, side, pos, allPawns);
}
