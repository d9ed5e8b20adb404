// From the position at `board` to the value that a table stores for it: finding the table, loading it at first use,
// gathering the squares in its order and frame.
#include "tablebase/internal.h"

#include "board/attacks.h"
#include "tablebase/tablebase.h"

#include <algorithm>
#include <mutex>

constexpr TBB firstAndLastRank = 0xFF000000000000FFULL;
constexpr i32 wdlStoredMax = 4;  // a table stores the value plus 2

// By WDL + 2.
constexpr i32 wdlToMapList[5] = {1, 3, 0, 2, 0};  // which value map is used
constexpr u8 wdlPlyFlag[5] = {DTZ_LOSS_PLIES, 0, 0, 0,
                              DTZ_WIN_PLIES};  // set: distances are in plies, not pairs

// Guards the first use of a WDL table; a ready one is read without it. Not constinit: some systems construct it.
static std::mutex tbMutex;

bool mayBeProbed(const Scacchiera& b) {
    const TBB ownKings = kings(b) & b.side;
    const TBB enemyKings = kings(b) & ~b.side;
    if (popCount(ownKings) != 1 || popCount(enemyKings) != 1 || popCount(occupied(b)) > probeMenMax) {
        return false;
    }
    const TBB noPiece = b.pbq & b.nbk & b.rqk;  // code 7, from impossible castling
    return noPiece == 0 && (pawns(b) & firstAndLastRank) == 0 &&
           (KingAttacks[lowestBit(ownKings)] & enemyKings) == 0;
}

// ---- frames ---------------------------------------------------------------------------------------------------

namespace {

// What leads from the real board to the table's.
struct ProbeFrame {
    i32 colourFlip;  // 8: the table's White is the real Black
    i32 squareFlip;  // 56 then
    i32 streamSide;  // which side to move, in the table's terms
};

}  // namespace

static ProbeFrame frameOf(const TableMaterial& material, u64 key) {
    const i32 blackMoves = blackToMove(*board) ? 1 : 0;
    if (material.symmetric != 0) {
        return ProbeFrame{8 * blackMoves, 56 * blackMoves, 0};
    }
    if (key != material.key) {
        return ProbeFrame{8, 56, 1 - blackMoves};
    }
    return ProbeFrame{0, 0, blackMoves};
}

// The men of a piece code by kind, both colours.
static TBB menOfKind(const Scacchiera& b, i32 kind) {
    const TBB pbq = (kind & 1) != 0 ? b.pbq : ~b.pbq;
    const TBB nbk = (kind & 2) != 0 ? b.nbk : ~b.nbk;
    const TBB rqk = (kind & 4) != 0 ? b.rqk : ~b.rqk;
    return pbq & nbk & rqk;
}

// The men of a real colour (0 White, 1 Black) and kind, on real squares.
static TBB realMen(i32 colour, i32 kind) {
    const Scacchiera& b = *board;
    const bool blackMoves = blackToMove(b);
    const TBB owner = (colour != 0) == blackMoves ? b.side : ~b.side;
    const TBB men = menOfKind(b, kind) & owner;
    return blackMoves ? byteSwap(men) : men;
}

// Writes the squares of the men `piece`, in the table's terms, from place `place` on; the place after them. Never
// passes place `num`.
static i32 gatherLike(i32 piece, const ProbeFrame& frame, TablePos& pos, i32 place, i32 num) {
    const i32 real = piece ^ frame.colourFlip;
    TBB men = realMen(real >> 3, real & 7);
    while (men != 0 && place < num) {
        pos[place++] = popLowest(men) ^ frame.squareFlip;
    }
    return place;
}

// Writes the squares of the men from place `place` on, in the table's order. False if the board lacks one of them.
static bool gatherMen(const TableMaterial& material, const TableSide& side, const ProbeFrame& frame,
                      TablePos& pos, i32 place) {
    while (place < material.num) {
        const i32 next = gatherLike(side.pieces[place], frame, pos, place, material.num);
        if (next == place) {
            return false;
        }
        place = next;
    }
    return true;
}

// The file group of the leading pawns, gathered by the first group's piece; -1 if the board lacks one of them.
static i32 gatherLeadingPawns(const TableMaterial& material, const TableSide& first, const ProbeFrame& frame,
                              TablePos& pos) {
    const i32 count = gatherLike(first.pieces[0], frame, pos, 0, material.num);
    return count == material.pawns[0] ? leadPawnFile(material, pos) : -1;
}

// The value of a side at the position, of which `pos` holds the first `place` squares; -1 if the file is damaged.
static i32 decodePosition(const TableMaterial& material, const TableSide& side, const ProbeFrame& frame,
                          TablePos& pos, i32 place) {
    if (side.stream == nullptr || !gatherMen(material, side, frame, pos, place)) {
        return -1;
    }
    const u64 idx =
        material.hasPawns != 0 ? indexPawns(material, side, pos) : indexPieces(material, side, pos);
    return idx < side.tbSize ? decodeStream(*side.stream, idx) : -1;
}

// ---- WDL ------------------------------------------------------------------------------------------------------

// One message for a table that fails: it leaves the registry.
static bool loadWdl(tbEntry& entry, u64 key) {
    const std::lock_guard<std::mutex> lock(tbMutex);
    if (entry.ready == 0) {
        char name[tableNameSize];
        tableNameOfPosition(name, key != entry.material.key ? 1 : 0);
        if (loadTableWdl(entry, name) == 0) {
            dropTable(entry.material);
            return false;
        }
        entry.ready = 1;
    }
    return true;
}

static i32 storedWdl(const tbEntry& entry, const ProbeFrame& frame) {
    const TableMaterial& material = entry.material;
    TablePos pos{};
    if (material.hasPawns == 0) {
        return decodePosition(material, entry.file->side[frame.streamSide], frame, pos, 0);
    }
    const i32 f = gatherLeadingPawns(material, entry.file->side[0], frame, pos);
    if (f < 0) {
        return -1;
    }
    return decodePosition(material, entry.file[f].side[frame.streamSide], frame, pos, material.pawns[0]);
}

i32 probeWdlTable(i32& success) {
    assert(mayBeProbed(*board) || popCount(occupied(*board)) > tbMenMax);
    if (occupied(*board) == kings(*board)) {
        return 0;
    }
    if (popCount(occupied(*board)) > tbMenMax) {  // their key may be that of fewer men
        success = 0;
        return 0;
    }
    const u64 key = materialKeyOfPosition(0);
    tbEntry* entry = lookupTable(key);
    if (entry == nullptr || (entry->ready == 0 && !loadWdl(*entry, key))) {
        success = 0;
        return 0;
    }
    const i32 stored = storedWdl(*entry, frameOf(entry->material, key));
    if (stored < 0 || stored > wdlStoredMax) {
        success = 0;
        return 0;
    }
    return stored - 2;
}

// ---- DTZ ------------------------------------------------------------------------------------------------------

static bool storesOtherSide(const dtzEntry& entry, const DtzFile& group, const ProbeFrame& frame) {
    // a symmetric table without pawns serves both sides
    return (entry.material.symmetric == 0 || entry.material.hasPawns != 0) &&
           (group.flags & DTZ_SIDE) != frame.streamSide;
}

// From the stored number to plies; -1 if it lies beyond its value map.
static i32 dtzOfStored(const dtzEntry& entry, const DtzFile& group, i32 wdl, i32 stored) {
    i32 dtz = stored;
    if ((group.flags & DTZ_MAPPED) != 0) {
        const i32 list = wdlToMapList[wdl + 2];
        if (stored >= group.valueMapLength[list]) {
            return -1;
        }
        dtz = entry.valueMap[group.valueMapStart[list] + stored];
    }
    const bool inPlies = (wdl & 1) == 0 && (group.flags & wdlPlyFlag[wdl + 2]) != 0;
    return inPlies ? dtz : 2 * dtz;
}

i32 probeDtzTable(i32 wdl, i32& success) {
    assert(mayBeProbed(*board) && wdl >= -2 && wdl <= 2 && wdl != 0);
    const u64 key = materialKeyOfPosition(0);
    const dtzEntry* entry = dtzEntryOf(key);
    if (entry == nullptr) {
        success = 0;
        return 0;
    }
    const TableMaterial& material = entry->material;
    const ProbeFrame frame = frameOf(material, key);
    TablePos pos{};
    i32 f = 0;
    if (material.hasPawns != 0) {
        f = gatherLeadingPawns(material, entry->file[0].side, frame, pos);
        if (f < 0) {
            success = 0;
            return 0;
        }
    }
    const DtzFile& group = entry->file[f];
    if (storesOtherSide(*entry, group, frame)) {
        success = -1;
        return 0;
    }
    const i32 stored = decodePosition(material, group.side, frame, pos, material.pawns[0]);
    const i32 dtz = stored < 0 ? -1 : dtzOfStored(*entry, group, wdl, stored);
    if (dtz < 0) {
        success = 0;
        return 0;
    }
    return dtz;
}
