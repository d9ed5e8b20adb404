// The index of every material of up to six men. A table's index is a mixed number: one digit for the head (three unlike
// men, the kings, or the leading pawns) and one for each group of like men after it. Each digit is shown to be one to
// one on its own, exhaustively, and the whole to be the same for a placement and its mirror images.
#include "table_names.h"
#include "tablebase/internal.h"

#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <random>
#include <set>

namespace {

constexpr u8 black = 8;

struct Layout {
    TableMaterial material;
    i32 pivotOrder;
    i32 pawnOrder;
    TableSide side;
};

bool belongsToHead(const TableMaterial& material, u8 piece) {
    if (material.hasPawns != 0) {
        return (piece & ~black) == PAWN;
    }
    return material.headKind == 0 ? material.men[piece] == 1 : (piece & ~black) == KING;
}

// An order of the men that a file may have: the head's first, the other kinds in any order.
std::array<u8, tbMenMax> randomOrder(const TableMaterial& material, std::mt19937& random) {
    std::vector<u8> kinds;
    for (u8 piece = 0; piece < 16; ++piece) {
        if (material.men[piece] != 0) {
            kinds.push_back(piece);
        }
    }
    std::shuffle(kinds.begin(), kinds.end(), random);
    std::stable_partition(kinds.begin(), kinds.end(),
                          [&](u8 piece) { return belongsToHead(material, piece); });
    if (material.hasPawns != 0 && material.men[kinds[0]] != material.pawns[0]) {
        std::swap(kinds[0], kinds[1]);
    }
    std::array<u8, tbMenMax> pieces{};
    i32 place = 0;
    for (const u8 piece : kinds) {
        for (i32 i = 0; i < material.men[piece]; ++i) {
            pieces[place++] = piece;
        }
    }
    return pieces;
}

i32 groupCount(const TableSide& side) {
    return static_cast<i32>(
        std::count_if(side.groupSize.begin(), side.groupSize.end(), [](u8 n) { return n > 0; }));
}

Layout randomLayout(const std::string& name, std::mt19937& random, i32 file = 0) {
    Layout layout{materialOfName(name.c_str()), 0, 15, {}};
    layout.side.pieces = randomOrder(layout.material, random);
    if (layout.material.hasPawns != 0) {
        setGroupsPawn(layout.material, layout.side);
    } else {
        setGroupsPiece(layout.material, layout.side);
    }
    std::vector<i32> orders(groupCount(layout.side));
    std::iota(orders.begin(), orders.end(), 0);
    std::shuffle(orders.begin(), orders.end(), random);
    layout.pivotOrder = orders[0];
    if (layout.material.hasPawns == 0) {
        layout.side.tbSize = computeFactorsPiece(layout.material, layout.side, layout.pivotOrder);
        return layout;
    }
    layout.pawnOrder = layout.material.pawns[1] != 0 ? orders[1] : 15;
    layout.side.tbSize =
        computeFactorsPawn(layout.material, layout.side, layout.pivotOrder, layout.pawnOrder, file);
    return layout;
}

u64 indexOf(const Layout& layout, TablePos pos) {
    return layout.material.hasPawns != 0 ? indexPawns(layout.material, layout.side, pos)
                                         : indexPieces(layout.material, layout.side, pos);
}

bool isPawn(u8 piece) {
    return (piece & ~black) == PAWN;
}

bool mayStand(u8 piece, i32 square) {
    return !isPawn(piece) || (square >= 8 && square < 56);
}

bool touch(i32 a, i32 b) {
    return std::abs(a % 8 - b % 8) <= 1 && std::abs(a / 8 - b / 8) <= 1;
}

// Puts the men from place `first` on random free squares. The kings are kept apart.
void placeRest(const Layout& layout, TablePos& pos, i32 first, std::mt19937& random) {
    const auto fits = [&](i32 place, i32 square) {
        for (i32 i = 0; i < place; ++i) {
            const bool bothKings =
                (layout.side.pieces[i] & ~black) == KING && (layout.side.pieces[place] & ~black) == KING;
            if (pos[i] == square || (bothKings && touch(pos[i], square))) {
                return false;
            }
        }
        return mayStand(layout.side.pieces[place], square);
    };
    for (i32 place = first; place < layout.material.num; ++place) {
        do {
            pos[place] = static_cast<i32>(random() % 64);
        } while (!fits(place, pos[place]));
    }
}

u64 choose(i32 n, i32 k) {
    u64 ways = 1;
    for (i32 i = 0; i < k; ++i) {
        ways = ways * static_cast<u64>(n - i) / static_cast<u64>(i + 1);
    }
    return ways;
}

// Calls `visit` with every choice of `count` rising squares out of `squares`.
template <typename Visit>
void forEachChoice(const std::vector<i32>& squares, i32 count, Visit visit) {
    std::vector<std::size_t> picks(static_cast<std::size_t>(count));
    std::iota(picks.begin(), picks.end(), 0);
    for (;;) {
        std::vector<i32> chosen;
        for (const std::size_t pick : picks) {
            chosen.push_back(squares[pick]);
        }
        visit(chosen);
        std::size_t i = picks.size();
        while (i > 0 && picks[i - 1] == squares.size() - picks.size() + i - 1) {
            --i;
        }
        if (i == 0) {
            return;
        }
        ++picks[i - 1];
        for (; i < picks.size(); ++i) {
            picks[i] = picks[i - 1] + 1;
        }
    }
}

// The eight images of a square; with pawns the first two alone keep the rules.
i32 image(i32 square, i32 symmetry) {
    i32 result = (symmetry & 1) != 0 ? square ^ 7 : square;
    result = (symmetry & 2) != 0 ? result ^ 56 : result;
    return (symmetry & 4) != 0 ? result % 8 * 8 + result / 8 : result;
}

template <std::size_t Count>
std::array<i32, Count> lowestImage(const std::array<i32, Count>& squares) {
    std::array<i32, Count> lowest = squares;
    for (i32 symmetry = 1; symmetry < 8; ++symmetry) {
        std::array<i32, Count> other = squares;
        for (i32& square : other) {
            square = image(square, symmetry);
        }
        lowest = std::min(lowest, other);
    }
    return lowest;
}

// Two leading pawns that are each other's mirror image do not tell which image is meant, nor do unlike men that all
// stand on long diagonals: such placements have an index for each image.
bool pawnsAreAmbiguous(const TablePos& pos, i32 count) {
    return std::find(pos.begin() + 1, pos.begin() + count, pos[0] ^ 7) != pos.begin() + count;
}

// What stands for the class of the leading pawns, of which the first leads.
std::vector<i32> lowestPawnImage(const TablePos& pos, i32 count) {
    std::vector<i32> squares(pos.begin(), pos.begin() + count);
    std::vector<i32> mirrored = squares;
    for (i32& square : mirrored) {
        square ^= 7;
    }
    std::sort(squares.begin(), squares.end());
    std::sort(mirrored.begin(), mirrored.end());
    return pawnsAreAmbiguous(pos, count) ? squares : std::min(squares, mirrored);
}

// The squares on which the group at `place` may stand when the men before it stand as in `pos`.
std::vector<i32> squaresFor(const Layout& layout, const TablePos& pos, i32 place) {
    std::vector<i32> squares;
    for (i32 square = 0; square < 64; ++square) {
        if (mayStand(layout.side.pieces[place], square) &&
            std::find(pos.begin(), pos.begin() + place, square) == pos.begin() + place) {
            squares.push_back(square);
        }
    }
    return squares;
}

// Each digit of a group appears once and only once over all its placements, the men before it standing still.
void expectGroupDigitOneToOne(const Layout& layout, TablePos pos, i32 place, std::mt19937& random) {
    const i32 size = layout.side.groupSize[place];
    const std::vector<i32> squares = squaresFor(layout, pos, place);
    const u64 ways = choose(static_cast<i32>(squares.size()), size);
    std::vector<bool> seen(static_cast<std::size_t>(ways));
    bool kept = true;
    TablePos rest = pos;
    forEachChoice(squares, size, [&](std::vector<i32> chosen) {
        std::shuffle(chosen.begin(), chosen.end(), random);
        std::copy(chosen.begin(), chosen.end(), rest.begin() + place);
        placeRest(layout, rest, place + size, random);
        const auto digit =
            static_cast<std::size_t>(indexOf(layout, rest) / layout.side.groupFactor[place] % ways);
        kept = kept && !seen[digit];
        seen[digit] = true;
    });
    EXPECT_TRUE(kept);
}

// Squares of the head that the index leaves as they are, so that the digits of the other groups are told in the same
// frame throughout: for pieces the first man in the triangle off the diagonal, for pawns the leading one on the left.
TablePos unfoldedHead(const Layout& layout, std::mt19937& random) {
    for (;;) {
        TablePos pos{};
        placeRest(layout, pos, 0, random);
        if (layout.material.hasPawns != 0) {
            (void)leadPawnFile(layout.material, pos);
            if (pos[0] % 8 < 4) {
                return pos;
            }
        } else if (pos[0] % 8 < 4 && pos[0] / 8 < 4 && pos[0] / 8 < pos[0] % 8) {
            return pos;
        }
    }
}

i32 headSize(const Layout& layout) {
    return layout.side.groupSize[0];
}

}  // namespace

TEST(TableIndex, FactorsAreTheProductsOfTheGroupsBefore) {
    std::mt19937 random(1);
    for (const std::string& name : tableNames(6)) {
        const Layout layout = randomLayout(name, random, 2);
        std::multimap<u64, i32> byFactor;
        for (i32 place = 0; place < layout.material.num; ++place) {
            if (layout.side.groupSize[place] != 0) {
                byFactor.insert({layout.side.groupFactor[place], place});
            }
        }
        ASSERT_EQ(byFactor.begin()->first, 1u) << name;
        ASSERT_LT(layout.side.tbSize, u64{1} << 40) << name;
        for (const auto& [factor, place] : byFactor) {
            ASSERT_EQ(layout.side.tbSize % factor, 0u) << name << " place " << place;
        }
    }
}

TEST(TableIndex, TheLargestTableNeedsMoreThan32Bits) {
    std::mt19937 random(1);
    EXPECT_EQ(randomLayout("KQRBvKN", random).side.tbSize, u64{31332} * 61 * 60 * 59);
    EXPECT_EQ(randomLayout("KQQQQvK", random).side.tbSize, u64{462} * 557845);
    EXPECT_EQ(randomLayout("KPvK", random).side.tbSize, u64{6} * 63 * 62);
}

TEST(TableIndex, ThreeUnlikeMenHaveOneNumberForEachClassOfMirrorImages) {
    std::mt19937 random(2);
    const Layout layout = randomLayout("KQvK", random);
    std::map<std::array<i32, 3>, u64> numbers;
    std::set<u64> used;
    for (i32 a = 0; a < 64; ++a) {
        for (i32 b = 0; b < 64; ++b) {
            for (i32 c = 0; c < 64; ++c) {
                if (a == b || b == c || a == c) {
                    continue;
                }
                const u64 number = indexOf(layout, TablePos{a, b, c});
                const auto [known, isNew] =
                    numbers.insert({lowestImage(std::array<i32, 3>{a, b, c}), number});
                ASSERT_EQ(known->second, number) << a << ' ' << b << ' ' << c;
                ASSERT_EQ(used.insert(number).second, isNew) << a << ' ' << b << ' ' << c;
            }
        }
    }
    EXPECT_EQ(used.size(), 31332u);
    EXPECT_EQ(*used.rbegin(), 31331u);
}

TEST(TableIndex, KingPairsHaveOneNumberForEachClassOfMirrorImages) {
    std::mt19937 random(3);
    const Layout layout = randomLayout("KNNvK", random);
    std::map<std::array<i32, 2>, u64> numbers;
    std::set<u64> used;
    for (i32 a = 0; a < 64; ++a) {
        for (i32 b = 0; b < 64; ++b) {
            if (touch(a, b)) {
                continue;
            }
            TablePos pos{a, b};
            placeRest(layout, pos, 2, random);
            const u64 number = indexOf(layout, pos) / layout.side.groupFactor[0] % 462;
            const auto [known, isNew] = numbers.insert({lowestImage(std::array<i32, 2>{a, b}), number});
            ASSERT_EQ(known->second, number) << a << ' ' << b;
            ASSERT_EQ(used.insert(number).second, isNew) << a << ' ' << b;
        }
    }
    EXPECT_EQ(used.size(), 462u);
    EXPECT_EQ(*used.rbegin(), 461u);
}

TEST(TableIndex, KingPairsOnTheLongDiagonalComeLast) {
    std::mt19937 random(4);
    const Layout layout = randomLayout("KNNvK", random);
    const u64 factor = layout.side.groupFactor[0];
    const auto numberOf = [&](i32 a, i32 b) {
        TablePos pos{a, b};
        placeRest(layout, pos, 2, random);
        return indexOf(layout, pos) / factor % 462;
    };
    EXPECT_EQ(numberOf(0, 18), 441u);             // a1, c3
    EXPECT_EQ(numberOf(0, 17), numberOf(0, 10));  // b3 is folded to c2
    EXPECT_LT(numberOf(0, 10), 441u);
    EXPECT_EQ(numberOf(27, 63), 461u);  // d4, h8
}

TEST(TableIndex, ThePawnsThatLeadHaveOneNumberForEachClassOfMirrorImages) {
    std::mt19937 random(5);
    for (const i32 count : {1, 2, 3, 4}) {
        std::string name = "K";
        name.append(static_cast<std::size_t>(count), 'P').append("vK");
        std::vector<i32> squares(48);
        std::iota(squares.begin(), squares.end(), 8);
        std::array<Layout, 4> layouts;
        for (i32 file = 0; file < 4; ++file) {
            layouts[file] = randomLayout(name, random, file);
        }
        std::map<std::vector<i32>, std::pair<i32, u64>> numbers;
        std::set<std::pair<i32, u64>> used;
        const u64 kingWays = static_cast<u64>((64 - count) * (63 - count));
        bool oneToOne = true;
        forEachChoice(squares, count, [&](const std::vector<i32>& chosen) {
            TablePos pos{};
            std::copy(chosen.begin(), chosen.end(), pos.begin());
            const i32 file = leadPawnFile(layouts[0].material, pos);
            const Layout& layout = layouts[file];
            placeRest(layout, pos, count, random);
            const u64 head = layout.side.tbSize / kingWays;
            const std::pair<i32, u64> number = {file,
                                                indexOf(layout, pos) / layout.side.groupFactor[0] % head};
            const auto [known, isNew] = numbers.insert({lowestPawnImage(pos, count), number});
            oneToOne = oneToOne && known->second == number && used.insert(number).second == isNew;
        });
        EXPECT_TRUE(oneToOne) << name;
        u64 sum = 0;
        for (const Layout& layout : layouts) {
            sum += layout.side.tbSize / kingWays;
        }
        EXPECT_EQ(used.size(), sum) << name;
    }
}

TEST(TableIndex, EachGroupHasOneDigitForEachOfItsPlacements) {
    std::mt19937 random(6);
    for (const std::string& name : tableNames(5)) {
        SCOPED_TRACE(name);
        const Layout layout = randomLayout(name, random);
        for (i32 place = headSize(layout); place < layout.material.num;
             place += layout.side.groupSize[place]) {
            expectGroupDigitOneToOne(layout, unfoldedHead(layout, random), place, random);
        }
    }
}

TEST(TableIndex, EachGroupOfSixMenHasOneDigitForEachOfItsPlacements) {
    std::mt19937 random(7);
    for (const std::string& name : tableNames(6)) {
        const Layout layout = randomLayout(name, random);
        if (layout.material.num < 6) {
            continue;
        }
        SCOPED_TRACE(name);
        for (i32 place = headSize(layout); place < layout.material.num;
             place += layout.side.groupSize[place]) {
            if (layout.side.groupSize[place] <= 2) {
                expectGroupDigitOneToOne(layout, unfoldedHead(layout, random), place, random);
            }
        }
    }
}

TEST(TableIndex, LargeGroupsOfSixMenHaveOneDigitForEachOfTheirPlacements) {
    std::mt19937 random(8);
    for (const char* name : {"KQQQQvK", "KPPPPvK", "KQQQvKQ", "KBBBvKB", "KNNNPvK", "KPPPvKP", "KRRRvKP"}) {
        SCOPED_TRACE(name);
        const Layout layout = randomLayout(name, random);
        for (i32 place = headSize(layout); place < layout.material.num;
             place += layout.side.groupSize[place]) {
            expectGroupDigitOneToOne(layout, unfoldedHead(layout, random), place, random);
        }
    }
}

static bool headIsAmbiguous(const Layout& layout, const TablePos& pos) {
    if (layout.material.hasPawns != 0) {
        return pawnsAreAmbiguous(pos, layout.material.pawns[0]);
    }
    return std::all_of(pos.begin(), pos.begin() + headSize(layout),
                       [](i32 square) { return square % 8 == square / 8 || square % 8 + square / 8 == 7; });
}

TEST(TableIndex, MirrorImagesHaveTheSameIndexBelowTheSize) {
    std::mt19937 random(9);
    for (const std::string& name : tableNames(6)) {
        SCOPED_TRACE(name);
        Layout layouts[4];
        for (i32 file = 0; file < 4; ++file) {
            std::mt19937 sameForAll(static_cast<u32>(name.size()));
            layouts[file] = randomLayout(name, sameForAll, file);
        }
        const bool hasPawns = layouts[0].material.hasPawns != 0;
        for (i32 i = 0; i < 200; ++i) {
            TablePos pos{};
            placeRest(layouts[0], pos, 0, random);
            const i32 file = hasPawns ? leadPawnFile(layouts[0].material, pos) : 0;
            const Layout& layout = layouts[file];
            const u64 index = indexOf(layout, pos);
            ASSERT_LT(index, layout.side.tbSize);
            if (headIsAmbiguous(layout, pos)) {
                continue;
            }
            for (i32 symmetry = 1; symmetry < (hasPawns ? 2 : 8); ++symmetry) {
                TablePos mirrored = pos;
                std::transform(pos.begin(), pos.begin() + layout.material.num, mirrored.begin(),
                               [symmetry](i32 square) { return image(square, symmetry); });
                if (hasPawns) {
                    ASSERT_EQ(leadPawnFile(layout.material, mirrored), file);
                }
                ASSERT_EQ(indexOf(layout, mirrored), index);
            }
        }
    }
}
