// Operations on move lists, and the tables behind the order of quiet moves. No list is sorted inside the tree.
#include "search/ordering.h"

#include "search/quicksort.h"

#include <algorithm>
#include <utility>

constinit std::array<std::array<std::array<i32, 64>, 64>, 2> historyTable{};
constinit std::array<std::array<Mossa, 2>, killerPlies> killers{};

i32 dropFromCaptures(Mossa move, MoveList& list) {
    for (i32 i = 0; i < list.count; ++i) {
        if (list.entries[i].move == move) {
            // deliberate: the scores stay where they are
            std::swap(list.entries[i].move, list.entries[list.count - 1].move);
            --list.count;
            return 1;
        }
    }
    return 0;
}

i32 dropFromQuiets(Mossa move, QuietList& list) {
    for (i32 i = 0; i < list.count; ++i) {
        if (list.entries[i] == move) {
            std::swap(list.entries[i], list.entries[list.count - 1]);
            --list.count;
            return 1;
        }
    }
    return 0;
}

i32 killerToEnd(i32 ply, QuietList& list) {
    assert(ply >= 0 && ply < killerPlies);
    const auto [newer, older] = killers[ply];
    for (i32 i = 0; i < list.count; ++i) {
        if (list.entries[i] == newer || list.entries[i] == older) {
            std::swap(list.entries[i], list.entries[list.count - 1]);
            return 1;
        }
    }
    return 0;
}

void historyToEnd(QuietList& list) {
    const auto& history = historyTable[blackToMove(*board) ? 1 : 0];
    const auto historyOf = [&history](Mossa move) { return history[moveFrom(move)][moveTo(move)]; };
    i32 threshold = 1;
    for (i32 i = 0; i < list.count; ++i) {
        if (historyOf(list.entries[i]) > threshold) {
            std::swap(list.entries[i], list.entries[list.count - 1]);
            // deliberate: the history of the move that has just left the last place
            threshold = historyOf(list.entries[i]);
        }
    }
}

void saveKiller(i32 ply, Mossa move) {
    assert(ply >= 0 && ply < killerPlies);
    if (killers[ply][0] != move) {
        killers[ply][1] = killers[ply][0];
        killers[ply][0] = move;
    }
}

bool isPseudoLegal(Mossa move) {
    const Scacchiera& b = *board;
    const TBB from = squareBit(moveFrom(move) & 63);
    const TBB to = squareBit(moveTo(move) & 63);
    const i32 kind = moveKind(move);
    const bool toEmpty = (occupied(b) & to) == 0;
    const bool toVictim = (opponent(b) & ~kings(b) & to) != 0;
    if ((from & b.side) == 0 || pieceCode(b, moveFrom(move) & 63) != (kind & 7)) {
        return false;
    }
    switch (kind) {
        case CASTLE_SHORT:
            return toEmpty && (b.castleRights & OWN_SHORT) != 0;
        case CASTLE_LONG:
            return toEmpty && (b.castleRights & OWN_LONG) != 0;
        case EN_PASSANT:
            return toEmpty && (to >> 8 & pawns(b) & ~b.side) != 0 && (moveTo(move) & 7) == b.epFile;
        default:
            return isMoveKind(kind) && ((kind & 8) != 0 ? toVictim : toEmpty);
    }
}

void rootMoves(RootList& list, i32& count) {
    MoveArray legal;
    legalMoves(legal, count);
    for (i32 i = 0; i < count; ++i) {
        list[i].move = legal[i];
    }
}

void sortByTbRank(RootList& list, i32 first, i32 last) {
    quicksort(list, first, last,
              [](const RootMove& a, const RootMove& pivot) { return a.tbRank < pivot.tbRank; });
}

void sortByScore(RootList& list, i32 first, i32 last) {
    quicksort(list, first, last,
              [](const RootMove& a, const RootMove& pivot) { return a.score > pivot.score; });
}
