// The lookup tables that are not constants of their header: lines between squares, sliding attacks, keys. All are worked
// out by the compiler.
#include "board/tables.h"

#include "board/board.h"
#include "platform/split_mix.h"

// ---- lines ----------------------------------------------------------------------------------------------------

static consteval std::array<SquareTable, 64> linesBetween() {
    std::array<SquareTable, 64> table{};
    for (i32 from = 0; from < 64; ++from) {
        for (i32 df = -1; df <= 1; ++df) {
            for (i32 dr = -1; dr <= 1; ++dr) {
                TBB passed = 0;
                for (i32 n = 1; n < 8 && (df != 0 || dr != 0); ++n) {
                    const TBB to = geometry::step(from, df * n, dr * n);
                    if (to == 0) {
                        break;
                    }
                    table[static_cast<u32>(from)][static_cast<u32>(lowestBit(to))] = passed;
                    passed |= to;
                }
            }
        }
    }
    return table;
}

constinit const std::array<SquareTable, 64> Between = linesBetween();

static_assert(linesBetween()[0][63] == 0x0040201008040200ULL && linesBetween()[0][17] == 0 &&
              linesBetween()[0][8] == 0);
static_assert(PawnAttacks[8] == squareBit(17) && PawnAttacks[15] == squareBit(22));

// ---- sliding attacks ------------------------------------------------------------------------------------------

// Multipliers, square 0 to 63, found by trial of sparse random numbers: no two subsets of a square's mask with
// different ray sets share an index. Any set with this property serves.
static constexpr std::array<u64, 64> bishopMultipliers = {
    0x04C4380860440140ULL, 0x002002020A0C2000ULL, 0x8021021400402002ULL, 0x8004242280404200ULL,
    0x0804030800108200ULL, 0x2001040240080080ULL, 0x0001040104400808ULL, 0x0084808800900444ULL,
    0x1200100411980200ULL, 0x0000B01080908480ULL, 0x0005088081020090ULL, 0x1091041C21828802ULL,
    0x0004020210240020ULL, 0x3081011002101580ULL, 0x1500408824100408ULL, 0x2420020100880540ULL,
    0x0860904002840122ULL, 0x8022003110021082ULL, 0x2042001004001820ULL, 0x4A0800A402102440ULL,
    0x0884000A00940008ULL, 0x0912006022100200ULL, 0x0411044200822000ULL, 0x0002012101092100ULL,
    0x00A0840808080800ULL, 0x0204022004080801ULL, 0x1118020001020200ULL, 0x0022008028008002ULL,
    0x2001001021004000ULL, 0x4000820181004216ULL, 0x00209122008C1000ULL, 0x00C04206A0808400ULL,
    0x0A01082000082001ULL, 0x0449043088421004ULL, 0x2000180600240C00ULL, 0x000B200800030811ULL,
    0x80840040101C0100ULL, 0x8012080600204040ULL, 0x0808880040010100ULL, 0x0018309282010040ULL,
    0x0428040484066080ULL, 0x6202085404500200ULL, 0x2400824240420800ULL, 0x820400D148003400ULL,
    0x4240200410404C00ULL, 0x081116180A010040ULL, 0x0C60084604A00040ULL, 0x028102020A000049ULL,
    0x400480842021C040ULL, 0x0002020124421984ULL, 0x4100410088041048ULL, 0x0040800084040400ULL,
    0x8200011002020416ULL, 0x05480810010A0A11ULL, 0x0010101148428000ULL, 0xA002840802004040ULL,
    0x0002020622020210ULL, 0x0000228048280401ULL, 0x0102500044041122ULL, 0x4421100400420880ULL,
    0x2803001C04104414ULL, 0x0002453012108104ULL, 0x0210C00508120441ULL, 0x3040010400820040ULL,
};
static constexpr std::array<u64, 64> rookMultipliers = {
    0x8080102040008000ULL, 0x5440041000200048ULL, 0x008020008010000AULL, 0x0200084200100420ULL,
    0x0200081020040200ULL, 0x0600019002002824ULL, 0x040050811008020CULL, 0x0100004881000126ULL,
    0x0005800440008020ULL, 0x2882002042090880ULL, 0x0002802000801004ULL, 0x0240808010000800ULL,
    0x4480800800040082ULL, 0x0408808004000200ULL, 0x00BA0004A8020001ULL, 0x1106000042040091ULL,
    0x0020208010400080ULL, 0x0022060045028020ULL, 0x0020008020100080ULL, 0x0202020008102041ULL,
    0x0C50808008000400ULL, 0x0068808002000400ULL, 0x00510400C8100201ULL, 0x400006000100A444ULL,
    0x483424818008400AULL, 0x8840008080200040ULL, 0x0800100080802000ULL, 0x0440100080800800ULL,
    0x4000080080040080ULL, 0x9124040080020080ULL, 0x0089000300040E00ULL, 0x080001020020488CULL,
    0x9040002040800080ULL, 0x80D0002001400242ULL, 0x0000401901002002ULL, 0x0030220901001000ULL,
    0x0080580005003100ULL, 0x0022006C0A001008ULL, 0x0802301144001248ULL, 0x0020010042000084ULL,
    0x4AC0400084228004ULL, 0x0010004020004000ULL, 0x3110004020010100ULL, 0x0598100009050020ULL,
    0x4200080011010004ULL, 0x0818020004008080ULL, 0x02A0708102040008ULL, 0x5201010080420004ULL,
    0x100B124063800100ULL, 0x7808200240048980ULL, 0x8800200010008080ULL, 0x1099201001000900ULL,
    0x0100050010080100ULL, 0x0400800200040080ULL, 0x2040280190020400ULL, 0x00100C0100608200ULL,
    0x0000201241088202ULL, 0x1040002042801B01ULL, 0x0124090010200041ULL, 0x0831002004081001ULL,
    0x2003000800021005ULL, 0x80010002040008C1ULL, 0x0208008122081004ULL, 0x4000008844002102ULL,
};

// The two lines of a slider, by their upward direction: steps to higher squares.
struct Direction {
    i32 file;
    i32 rank;
};
using Directions = std::array<Direction, 2>;
static constexpr Directions bishopDirections = {{{1, 1}, {-1, 1}}};
static constexpr Directions rookDirections = {{{1, 0}, {0, 1}}};

static constexpr i32 bishopAttackSets = 5248;
static constexpr i32 rookAttackSets = 102400;

// A line through a square, without the square.
struct Line {
    TBB above;  // its squares with higher numbers
    TBB below;
    TBB mask;  // those that can block: without the last one on either side
};

static consteval Line lineThrough(i32 square, const Direction& d) {
    Line line{};
    for (i32 n = 1; n < 8; ++n) {
        const TBB up = geometry::step(square, d.file * n, d.rank * n);
        const TBB down = geometry::step(square, -d.file * n, -d.rank * n);
        line.above |= up;
        line.below |= down;
        line.mask |= geometry::step(square, d.file * (n + 1), d.rank * (n + 1)) != 0 ? up : 0;
        line.mask |= geometry::step(square, -d.file * (n + 1), -d.rank * (n + 1)) != 0 ? down : 0;
    }
    return line;
}

// The squares of the line up to and including the first blocker on either side.
static consteval TBB reachedOnLine(const Line& line, TBB blockers) {
    const TBB above = blockers & line.above;
    const TBB below = blockers & line.below;
    const TBB downToBlocker = ~TBB{0} << (63 - std::countl_zero(below | 1));
    return (line.above & (above ^ (above - 1))) | (line.below & downToBlocker);
}

// All ways in which a line can be blocked.
struct LineSets {
    struct Entry {
        u64 product;  // the blockers times the square's multiplier
        TBB reached;
    };
    u32 count;
    std::array<Entry, 64> entries;
};

static consteval LineSets setsOfLine(const Line& line, u64 magic) {
    LineSets sets{};
    TBB blockers = 0;
    do {
        sets.entries[sets.count++] = {blockers * magic, reachedOnLine(line, blockers)};
        blockers = (blockers - line.mask) & line.mask;
    } while (blockers != 0);
    return sets;
}

static consteval std::array<MagicEntry, 64> magicEntries(const Directions& directions,
                                                         const std::array<u64, 64>& multipliers,
                                                         const TBB* stretch) {
    std::array<MagicEntry, 64> entries{};
    for (u32 square = 0; square < 64; ++square) {
        const i32 from = static_cast<i32>(square);
        const TBB mask = lineThrough(from, directions[0]).mask | lineThrough(from, directions[1]).mask;
        const i32 bits = std::popcount(mask);
        entries[square] = {mask, multipliers[square], static_cast<u32>(64 - bits), stretch};
        stretch += std::size_t{1} << bits;
    }
    return entries;
}

// Fills the stretches of one kind of piece, which begin at `stretch`. What blocks both lines of a square is the sum of
// what blocks each, and so is its product.
static consteval void fillStretches(const std::array<MagicEntry, 64>& entries, const Directions& directions,
                                    TBB* stretch) {
    for (i32 square = 0; square < 64; ++square) {
        const MagicEntry& entry = entries[static_cast<u32>(square)];
        const LineSets first = setsOfLine(lineThrough(square, directions[0]), entry.magic);
        const LineSets second = setsOfLine(lineThrough(square, directions[1]), entry.magic);
        for (u32 i = 0; i < first.count; ++i) {
            const LineSets::Entry one = first.entries[i];
            for (u32 k = 0; k < second.count; ++k) {
                const LineSets::Entry& other = second.entries[k];
                stretch[(one.product + other.product) >> entry.shift] = one.reached | other.reached;
            }
        }
        stretch += std::size_t{1} << (64 - entry.shift);
    }
}

using AttackBlock = std::array<TBB, bishopAttackSets + rookAttackSets>;

static consteval AttackBlock attackSets() {
    AttackBlock block{};
    TBB* const bishops = block.data();
    TBB* const rooks = bishops + bishopAttackSets;
    fillStretches(magicEntries(bishopDirections, bishopMultipliers, bishops), bishopDirections, bishops);
    fillStretches(magicEntries(rookDirections, rookMultipliers, rooks), rookDirections, rooks);
    return block;
}

// The bishops' stretches, square 0 to 63, then the rooks'. Ready-made: filled at the start it would cost more than all
// else that happens there.
static constinit const AttackBlock attackBlock = attackSets();

constinit const std::array<MagicEntry, 64> bishopMagic =
    magicEntries(bishopDirections, bishopMultipliers, attackBlock.data());
constinit const std::array<MagicEntry, 64> rookMagic =
    magicEntries(rookDirections, rookMultipliers, attackBlock.data() + bishopAttackSets);

// ---- keys -----------------------------------------------------------------------------------------------------

// The order of the draws is part of the keys' definition.
static consteval ZobristKeys drawKeys() {
    ZobristKeys keys{};
    u64 state = 0x2545F4914F6CDD1DULL;
    const auto draw = [&state] { return splitMix64(state); };
    for (auto& row : keys.piece) {
        for (u64& key : row) {
            key = draw();
        }
    }
    for (u64& key : keys.castle) {
        key = draw();
    }
    for (u32 file = 0; file < 8; ++file) {
        keys.ep[file] = draw();
    }
    keys.side = draw();
    return keys;
}

constinit const ZobristKeys zobrist = drawKeys();
