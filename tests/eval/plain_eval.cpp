#include "plain_eval.h"

#include "board/board.h"
#include "hash/random64.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

struct Man {
    bool present;
    bool own;
    i32 code;
};

// A frame: [rank][file] as its side sees it.
struct Frame {
    std::array<std::array<Man, 8>, 8> at;
    bool black;
};

Frame frameOf(const Scacchiera& b) {
    Frame frame{};
    for (i32 s = 0; s < 64; ++s) {
        const i32 code = pieceCode(b, s);
        const bool own = (b.side >> s & 1) != 0;
        frame.at[static_cast<u32>(s / 8)][static_cast<u32>(s % 8)] = {code != 0, own, code};
    }
    frame.black = blackToMove(b);
    return frame;
}

bool onBoard(i32 rank, i32 file) {
    return rank >= 0 && rank < 8 && file >= 0 && file < 8;
}

// Code 7 comes only of impossible castling and counts as bishop, queen and king, as the sets say.
bool isOf(const Man& man, i32 code) {
    return man.code == code || (man.code == 7 && (code == BISHOP || code == QUEEN || code == KING));
}

bool has(const Frame& f, i32 rank, i32 file, bool own, i32 code) {
    if (!onBoard(rank, file)) {
        return false;
    }
    const Man& man = f.at[static_cast<u32>(rank)][static_cast<u32>(file)];
    return man.present && man.own == own && isOf(man, code);
}

struct Square {
    i32 rank;
    i32 file;
};

bool operator==(Square a, Square b) {
    return a.rank == b.rank && a.file == b.file;
}

Square named(const char* name) {
    return {name[1] - '1', name[0] - 'a'};
}

i32 number(Square s) {
    return s.rank * 8 + s.file;
}

std::vector<Square> find(const Frame& f, bool own, i32 code) {
    std::vector<Square> found;
    for (i32 rank = 0; rank < 8; ++rank) {
        for (i32 file = 0; file < 8; ++file) {
            if (has(f, rank, file, own, code)) {
                found.push_back({rank, file});
            }
        }
    }
    return found;
}

bool stands(const Frame& f, const char* name, bool own, i32 code) {
    return has(f, named(name).rank, named(name).file, own, code);
}

bool occupiedAt(const Frame& f, Square s) {
    return f.at[static_cast<u32>(s.rank)][static_cast<u32>(s.file)].present;
}

// The king that counts: the lowest.
bool kingOf(const Frame& f, bool own, Square& king) {
    const std::vector<Square> all = find(f, own, KING);
    if (all.empty()) {
        return false;
    }
    king = all.front();
    return true;
}

i32 menOnBoard(const Frame& f) {
    i32 men = 0;
    for (i32 s = 0; s < 64; ++s) {
        men += occupiedAt(f, {s / 8, s % 8}) ? 1 : 0;
    }
    return men;
}

// ---- attacks --------------------------------------------------------------------------------------------------

std::vector<Square> steps(Square from, const std::vector<Square>& offsets) {
    std::vector<Square> reached;
    for (const Square o : offsets) {
        if (onBoard(from.rank + o.rank, from.file + o.file)) {
            reached.push_back({from.rank + o.rank, from.file + o.file});
        }
    }
    return reached;
}

const std::vector<Square> knightOffsets = {{2, 1},   {1, 2},   {-1, 2}, {-2, 1},
                                           {-2, -1}, {-1, -2}, {1, -2}, {2, -1}};
const std::vector<Square> kingOffsets = {{1, 0},  {1, 1},   {0, 1},  {-1, 1},
                                         {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
const std::vector<Square> bishopLines = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
const std::vector<Square> rookLines = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};

std::vector<Square> slide(const Frame& f, Square from, const std::vector<Square>& lines) {
    std::vector<Square> reached;
    for (const Square line : lines) {
        Square s = {from.rank + line.rank, from.file + line.file};
        while (onBoard(s.rank, s.file)) {
            reached.push_back(s);
            if (occupiedAt(f, s)) {
                break;
            }
            s = {s.rank + line.rank, s.file + line.file};
        }
    }
    return reached;
}

std::vector<Square> attacksOf(const Frame& f, Square from, i32 code) {
    switch (code) {
        case PAWN:
            return from.rank == 0 || from.rank == 7 ? std::vector<Square>{} : steps(from, {{1, -1}, {1, 1}});
        case KNIGHT:
            return steps(from, knightOffsets);
        case BISHOP:
            return slide(f, from, bishopLines);
        case ROOK:
            return slide(f, from, rookLines);
        case QUEEN: {
            std::vector<Square> all = slide(f, from, bishopLines);
            const std::vector<Square> straight = slide(f, from, rookLines);
            all.insert(all.end(), straight.begin(), straight.end());
            return all;
        }
        default:
            return steps(from, kingOffsets);
    }
}

using AttackMap = std::array<u8, 64>;  // by real square

i32 realSquare(const Frame& f, Square s) {
    return f.black ? number(s) ^ 56 : number(s);
}

AttackMap mapOf(const Frame& f) {
    AttackMap map{};
    const std::array<std::pair<i32, i32>, 6> kinds = {
        {{PAWN, 8}, {KNIGHT, 16}, {BISHOP, 16}, {ROOK, 32}, {QUEEN, 64}, {KING, 128}}};
    for (const auto& [code, flag] : kinds) {
        for (const Square from : find(f, true, code)) {
            for (const Square to : attacksOf(f, from, code)) {
                u8& entry = map[static_cast<u32>(realSquare(f, to))];
                entry = static_cast<u8>(static_cast<u8>(entry + 1) | flag);
            }
            if (code == KING) {
                break;
            }
        }
    }
    return map;
}

// ---- pawns ----------------------------------------------------------------------------------------------------

struct PawnEntry {
    i32 score;
    std::vector<Square> passed;
    i32 healthy;
};

PawnEntry plainPawnStructure(const Frame& f) {
    const std::vector<Square> own = find(f, true, PAWN);
    const auto ownPawnOnFile = [&](i32 file) {
        return std::any_of(own.begin(), own.end(), [&](Square s) { return s.file == file; });
    };
    i32 islands = 0;
    for (i32 file = 0; file < 8; ++file) {
        islands += ownPawnOnFile(file) && (file == 7 || !ownPawnOnFile(file + 1)) ? 1 : 0;
    }
    const i32 t1 = std::abs(3 * islands * islands - static_cast<i32>(own.size()));

    const auto filled = [&](i32 rank, i32 file) {
        return std::any_of(own.begin(), own.end(),
                           [&](Square s) { return s.file == file && s.rank >= rank; });
    };
    i32 t2 = 0;
    for (i32 rank = 0; rank < 8; ++rank) {
        for (i32 file = 1; file < 8; ++file) {
            t2 += filled(rank, file) != filled(rank, file - 1) ? 1 : 0;
        }
    }

    i32 t3 = 0;
    for (const Square s : own) {
        const bool frontAttacked =
            has(f, s.rank + 2, s.file - 1, false, PAWN) || has(f, s.rank + 2, s.file + 1, false, PAWN);
        const bool supported = std::any_of(own.begin(), own.end(), [&](Square o) {
            return std::abs(o.file - s.file) == 1 && o.rank <= s.rank;
        });
        bool enemyAhead = false;
        for (i32 rank = s.rank + 1; rank < 8; ++rank) {
            enemyAhead = enemyAhead || has(f, rank, s.file, false, PAWN);
        }
        t3 += (s.rank == 1 || s.rank == 2) && frontAttacked && !supported && !enemyAhead ? 1 : 0;
    }

    PawnEntry entry{-(t1 + t2 + 10 * t3), {}, 0};
    const std::array<i32, 8> rankBonus = {0, 5, 10, 20, 35, 60, 100, 200};
    for (std::size_t i = 0; i < own.size(); ++i) {
        const Square s = own[i];
        i32 sameFile = 0;
        i32 neighbours = 0;
        for (std::size_t j = i; j < own.size(); ++j) {
            sameFile += own[j].file == s.file ? 1 : 0;
            neighbours += std::abs(own[j].file - s.file) == 1 ? 1 : 0;
        }
        bool passed = true;
        for (i32 rank = s.rank + 1; rank <= 6 && s.rank >= 1; ++rank) {
            for (i32 file = s.file - 1; file <= s.file + 1; ++file) {
                passed = passed && !has(f, rank, file, false, PAWN);
            }
        }
        if (passed) {
            entry.passed.push_back(s);
            entry.score += rankBonus[static_cast<u32>(s.rank)];
        }
        if (neighbours == 0) {
            entry.score -= 10;
        }
        if (sameFile > 1) {
            entry.score -= 10 * sameFile;
            entry.healthy += neighbours != 0 ? 1 : 0;
        }
        if (sameFile == 1) {
            ++entry.healthy;
        }
    }
    return entry;
}

u32 plainPawnKey(const Frame& f) {
    u64 key = 0;
    for (const Square s : find(f, true, PAWN)) {
        key ^= Random64[static_cast<u32>((f.black ? 0 : 64) + number(s))];
    }
    for (const Square s : find(f, false, PAWN)) {
        key ^= Random64[static_cast<u32>((f.black ? 64 : 0) + number(s))];
    }
    return static_cast<u32>(key);
}

// Starts with what an empty slot says about key 0.
using PawnTable = std::map<u32, PawnEntry>;

i32 distance(Square a, Square b) {
    return std::max(std::abs(a.rank - b.rank), std::abs(a.file - b.file));
}

// ---- a pass ---------------------------------------------------------------------------------------------------

struct PassInput {
    Frame f;
    AttackMap own;
    AttackMap enemy;
    bool haveMaps;
};

i32 ownPawnCount(const Frame& f) {
    return std::min(static_cast<i32>(find(f, true, PAWN).size()), 8);
}

// Whether an enemy pawn could attack the square now or after moving.
bool enemyPawnsCover(const Frame& f, Square s) {
    for (const Square p : find(f, false, PAWN)) {
        if (std::abs(p.file - s.file) == 1 && s.rank < p.rank) {
            return true;
        }
    }
    return false;
}

bool ownPawnsCover(const Frame& f, Square s) {
    for (const Square p : find(f, true, PAWN)) {
        if (std::abs(p.file - s.file) == 1 && s.rank > p.rank) {
            return true;
        }
    }
    return false;
}

bool isOutpost(const Frame& f, Square s) {
    const std::vector<std::string> names = {"d4", "e4", "c5", "d5", "e5", "f5", "c6", "d6", "e6", "f6"};
    const bool listed = std::any_of(names.begin(), names.end(),
                                    [&](const std::string& name) { return named(name.c_str()) == s; });
    return listed && !enemyPawnsCover(f, s) && ownPawnsCover(f, s);
}

using Walk = std::vector<Square>;

bool restHolds(const Walk& rest, const char* name) {
    return std::find(rest.begin(), rest.end(), named(name)) != rest.end();
}

bool restHasOutpost(const Frame& f, const Walk& rest) {
    return std::any_of(rest.begin(), rest.end(), [&](Square s) { return isOutpost(f, s); });
}

i32 knights(const Frame& f) {
    const auto pawn = [&](const char* name) { return stands(f, name, false, PAWN); };
    const std::array<i32, 9> adjust = {-20, -16, -12, -8, -4, 0, 4, 8, 12};
    i32 score = 0;
    for (Walk rest = find(f, true, KNIGHT); !rest.empty(); rest.erase(rest.begin())) {
        const Walk reached = attacksOf(f, rest.front(), KNIGHT);
        if ((restHolds(rest, "a7") && (pawn("a6") || pawn("b7"))) ||
            (restHolds(rest, "a8") && (pawn("a7") || pawn("c7"))) ||
            (restHolds(rest, "h7") && (pawn("h6") || pawn("g7"))) ||
            (restHolds(rest, "h8") && (pawn("f7") || pawn("h7")))) {
            score -= 20;
        }
        if (restHasOutpost(f, rest)) {
            score += 15;
        }
        const auto free = std::count_if(reached.begin(), reached.end(), [&](Square s) {
            return !occupiedAt(f, s) || !f.at[static_cast<u32>(s.rank)][static_cast<u32>(s.file)].own;
        });
        if (free <= 3) {
            score -= 10;
        }
        score += adjust[static_cast<u32>(ownPawnCount(f))];
        const bool guards = std::any_of(reached.begin(), reached.end(), [&](Square s) {
            return std::find(rest.begin(), rest.end(), s) != rest.end();
        });
        if (guards) {
            score -= 10;
        }
    }
    return score;
}

bool lineHasPawn(const Frame& f, Square s, i32 fileStep) {
    for (i32 n = -7; n <= 7; ++n) {
        const i32 rank = s.rank + n;
        const i32 file = s.file + n * fileStep;
        if (n != 0 && (has(f, rank, file, true, PAWN) || has(f, rank, file, false, PAWN))) {
            return true;
        }
    }
    return false;
}

i32 bishops(const Frame& f) {
    const Walk all = find(f, true, BISHOP);
    i32 score = 0;
    for (Walk rest = all; !rest.empty(); rest.erase(rest.begin())) {
        if (restHolds(rest, "a7") && stands(f, "b6", false, PAWN)) {
            score -= 100;
        } else if (restHolds(rest, "h7") && stands(f, "g6", false, PAWN)) {
            score -= 100;
        }
        if (attacksOf(f, rest.front(), BISHOP).size() <= 5) {
            score -= 10;
        }
        const bool onFalling =
            std::any_of(rest.begin(), rest.end(), [](Square s) { return s.rank + s.file == 7; });
        const bool onRising =
            std::any_of(rest.begin(), rest.end(), [](Square s) { return s.rank == s.file; });
        if (onFalling && !lineHasPawn(f, rest.front(), -1)) {
            score += 10;
        }
        if (onRising && !lineHasPawn(f, rest.front(), 1)) {
            score += 10;
        }
        if (restHasOutpost(f, rest)) {
            score += 15;
        }
    }
    if (all.size() == 1) {
        for (const Square p : find(f, true, PAWN)) {
            const bool sameColour = (p.rank + p.file) % 2 == (all[0].rank + all[0].file) % 2;
            score += sameColour ? -3 : 3;
        }
    }
    return all.size() == 2 ? score + 30 : score;
}

i32 rooks(const Frame& f, const std::vector<Square>& passed) {
    const std::array<i32, 9> adjust = {15, 12, 9, 6, 3, 0, -3, -6, -9};
    const bool anyPawn = !find(f, true, PAWN).empty() || !find(f, false, PAWN).empty();
    const auto pawnOnFile = [&](i32 file, bool own) {
        bool found = false;
        for (i32 rank = 0; rank < 8; ++rank) {
            found = found || has(f, rank, file, own, PAWN);
        }
        return found;
    };
    Square ownKing{};
    Square enemyKing{};
    const bool haveOwnKing = kingOf(f, true, ownKing);
    const bool haveEnemyKing = kingOf(f, false, enemyKing);
    i32 score = 0;
    for (Walk rest = find(f, true, ROOK); !rest.empty(); rest.erase(rest.begin())) {
        const Square s = rest.front();
        score += adjust[static_cast<u32>(ownPawnCount(f))];
        if (restHasOutpost(f, rest)) {
            score += 15;
        }
        if (attacksOf(f, s, ROOK).size() <= 7) {
            score -= 10;
        }
        if (!anyPawn) {
            continue;
        }
        bool meetsOpen = false;
        bool meetsHalfOpen = false;
        for (i32 file = 0; file < 8; ++file) {
            if (file != s.file && s.file != 7) {
                continue;
            }
            meetsOpen = meetsOpen || (!pawnOnFile(file, true) && !pawnOnFile(file, false));
            meetsHalfOpen = meetsHalfOpen || (!pawnOnFile(file, true) && pawnOnFile(file, false));
        }
        score += meetsOpen ? 10 : 0;
        score += meetsHalfOpen ? 5 : 0;
        if (s.rank == 6 && haveEnemyKing && enemyKing.rank == 7) {
            score += 20;
        }
        const auto kingOn = [&](const char* a, const char* b) {
            return haveOwnKing && (ownKing == named(a) || ownKing == named(b));
        };
        const auto rookOn = [&](const char* a, const char* b, const char* c) {
            return s == named(a) || s == named(b) || s == named(c);
        };
        if (kingOn("f1", "g1") && rookOn("g1", "h1", "h2")) {
            score -= 30;
        } else if (kingOn("b1", "c1") && rookOn("a1", "b1", "a2")) {
            score -= 30;
        }
        for (const Square p : passed) {
            if (p.file == s.file) {
                score += number(s) < number(p) ? 15 : number(s) > number(p) ? -15 : 0;
            }
        }
    }
    return score;
}

i32 queens(const Frame& f) {
    i32 score = 0;
    for (const Square s : find(f, true, QUEEN)) {
        score -= attacksOf(f, s, QUEEN).size() <= 7 ? 10 : 0;
    }
    return score;
}

i32 hanging(const PassInput& in) {
    const std::array<std::pair<i32, i32>, 4> penalties = {
        {{KNIGHT, 20}, {BISHOP, 20}, {ROOK, 10}, {QUEEN, 10}}};
    i32 score = 0;
    for (const auto& [code, penalty] : penalties) {
        for (const Square s : find(in.f, true, code)) {
            const u32 idx = static_cast<u32>(realSquare(in.f, s));
            score -= in.own[idx] == 0 && in.enemy[idx] != 0 ? penalty : 0;
        }
    }
    return score;
}

i32 exposure(Square king) {
    const std::array<const char*, 8> printed = {"44444444", "44444444", "44444444", "44444444",
                                                "44444444", "43333333", "21111112", "20000002"};
    return printed[static_cast<u32>(7 - king.rank)][king.file] - '0';
}

i32 kingSafety(const PassInput& in, i32& kingDanger) {
    Square k{};
    if (!kingOf(in.f, true, k)) {
        return 0;
    }
    const Walk front1 = steps(k, {{1, -1}, {1, 0}, {1, 1}});
    const Walk front2 = steps(k, {{2, -1}, {2, 0}, {2, 1}});
    const Walk sides = steps(k, {{0, -1}, {0, 1}, {-1, -1}, {-1, 0}, {-1, 1}});
    const auto pawnsOn = [&](const Walk& zone) {
        return static_cast<i32>(std::count_if(
            zone.begin(), zone.end(), [&](Square s) { return has(in.f, s.rank, s.file, true, PAWN); }));
    };
    const i32 shield = 4 * (3 - pawnsOn(front1)) + 2 * (3 - pawnsOn(front2));

    const auto enemyCount = [&](i32 code) { return find(in.f, false, code).size(); };
    i32 units = enemyCount(ROOK) + enemyCount(BISHOP) + enemyCount(KNIGHT) >= 2 ? exposure(k) : 0;
    u32 flags = 0;
    for (const Square s : front2) {
        flags |= in.enemy[static_cast<u32>(realSquare(in.f, s))];
    }
    for (const Walk& zone : {sides, front1}) {
        for (const Square s : zone) {
            const u32 idx = static_cast<u32>(realSquare(in.f, s));
            if (in.enemy[idx] != 0) {
                flags |= in.enemy[idx];
                units += in.own[idx] == 129 ? 2 : 1;
            }
        }
    }
    const std::array<i32, 32> pattern = {0, 0, 0, 0, 0, 0, 1, 1, 0, 1, 2, 2, 2, 3, 3, 3,
                                         0, 0, 0, 0, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3};
    const std::array<i32, 9> lowDanger = {0, 2, 3, 6, 12, 18, 25, 37, 50};
    const i32 index = pattern[flags >> 3] + units;
    const i32 danger = index < 9 ? lowDanger[static_cast<u32>(index)] : std::min(75 + 25 * (index - 9), 600);
    if (danger > 12) {
        kingDanger = 1;
    }
    return -shield - danger;
}

i32 pass(const PassInput& in, PawnTable& table, i32& kingDanger) {
    const Frame& f = in.f;
    const u32 key = plainPawnKey(f);
    if (table.find(key) == table.end()) {
        table[key] = plainPawnStructure(f);
    }
    const PawnEntry& pawnEntry = table[key];
    i32 score = pawnEntry.score;

    bool onlyKingsAndPawns = true;
    for (i32 s = 0; s < 64; ++s) {
        const Man& man = f.at[static_cast<u32>(s / 8)][static_cast<u32>(s % 8)];
        onlyKingsAndPawns = onlyKingsAndPawns && (!man.present || isOf(man, PAWN) || isOf(man, KING));
    }
    if (onlyKingsAndPawns) {
        const i32 healthy = std::min(pawnEntry.healthy, 8);
        score += healthy <= 1 ? 0 : 100 * (healthy - 1);
    }

    const bool anyQueen = !find(f, true, QUEEN).empty() || !find(f, false, QUEEN).empty();
    if (menOnBoard(f) <= 16) {
        Square king{};
        if (kingOf(f, true, king) && std::any_of(pawnEntry.passed.begin(), pawnEntry.passed.end(),
                                                 [&](Square p) { return distance(p, king) == 1; })) {
            score += 15;
        }
        if (!anyQueen && kingOf(f, false, king)) {
            const std::array<i32, 8> weight = {0, 2, 3, 5, 10, 15, 20, 0};
            for (const Square p : pawnEntry.passed) {
                score += distance(p, king) * weight[static_cast<u32>(p.rank)];
            }
        }
    }
    score += knights(f) + bishops(f) + rooks(f, pawnEntry.passed) + queens(f);
    if (in.haveMaps) {
        score += hanging(in);
        if (!find(f, false, QUEEN).empty()) {
            score += kingSafety(in, kingDanger);
        }
    }
    return score;
}

bool deadDraw(const Frame& f) {
    std::array<i32, 2> sums{};
    std::array<bool, 2> kingOnRim{};
    for (const bool own : {false, true}) {
        if (!find(f, own, PAWN).empty()) {
            return false;
        }
        const auto count = [&](i32 code) { return static_cast<i32>(find(f, own, code).size()); };
        sums[own ? 1 : 0] = 325 * (count(KNIGHT) + count(BISHOP)) + 500 * count(ROOK) + 950 * count(QUEEN);
        Square king{};
        kingOnRim[own ? 1 : 0] =
            kingOf(f, own, king) && (king.rank == 0 || king.rank == 7 || king.file == 0 || king.file == 7);
    }
    return sums[0] <= 399 && sums[1] <= 399 && !(kingOnRim[1] && sums[0] != 0) &&
           !(kingOnRim[0] && sums[1] != 0);
}

}  // namespace

PlainValue plainEvaluate() {
    Scacchiera view = *board;
    const Frame toMove = frameOf(view);
    if (deadDraw(toMove)) {
        return {0, 0};
    }
    flipBoard(view);
    const Frame other = frameOf(view);

    bool anyQueen = false;
    bool anyOther = false;
    for (const bool own : {false, true}) {
        anyQueen = anyQueen || !find(toMove, own, QUEEN).empty();
        for (const i32 code : {ROOK, BISHOP, KNIGHT}) {
            anyOther = anyOther || !find(toMove, own, code).empty();
        }
    }
    const AttackMap ownMap = mapOf(toMove);
    const AttackMap enemyMap = mapOf(other);
    PawnTable table;
    table[0] = {0, {}, 0};
    i32 kingDanger = 0;
    i32 score = board->psqScore;
    score += pass({toMove, ownMap, enemyMap, anyQueen && anyOther}, table, kingDanger);
    score -= pass({other, enemyMap, ownMap, anyQueen && anyOther}, table, kingDanger);
    return {wrap16(score), kingDanger};
}
