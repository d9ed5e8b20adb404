// What the files of this folder share, and what their tests look into.
//
// A table serves both colourings of its material. Its squares and colours are those of its name, whose first side is
// White; `ProbeFrame` leads there from the real board.
#pragma once

#include "board/board.h"
#include "platform/platform.h"
#include "platform/relaxed.h"

#include <array>

constexpr i32 tbMenMax = 6;
constexpr i32 black = 8;  // added to a piece code

// ---- records --------------------------------------------------------------------------------------------------

/// The men of a table, known from its name.
struct TableMaterial {
    u64 key;                 // material key with the first side of the name as White
    u64 key2;                // and as Black
    std::array<u8, 16> men;  // how many, by piece code, black men 8 higher
    u8 num;                  // men, kings included
    u8 symmetric;            // 1 when both sides have the same men
    u8 hasPawns;             // 1 when there is a pawn
    u8 headKind;             // without pawns: 0 when the index starts with three unlike men, 2 with the kings
    u8 pawns[2];             // pawns of the side whose pawns lead, and of the other
};

constexpr i32 headBits = 10;

/// What the first headBits bits of a bit stream tell.
struct StreamHead {
    u16 values;      // of all symbols that end within them
    u8 length;       // bits of those symbols; 0: not even the first ends there
    u8 firstLength;  // bits of the first symbol, or headBits + 1 if it needs more
};

/// One compressed stream. Refers into the mapping; the allocation ends with one span for each symbol.
struct streamData {
    const u8* indexTable;
    const u8* sizeTable;
    const u8* data;
    const u8* mapEnd;  // end of the mapping: nothing is read from here on
    const u8* symbolPairs;
    u8* symbolSpan;  // values in a symbol, minus one
    u32 blockCount;
    u64 sizeCount;  // entries of the size table: some more than blocks, for an index point behind the last one
    u32 symbolCount;
    i32 blockSize;               // log 2 of bytes
    i32 indexBits;               // log 2 of indices between two index points; 0: the stream is constant
    i32 minCodeLength;           // bits; the value itself when the stream is constant
    std::array<u64, 33> base;    // first code of each length, left-justified
    std::array<u16, 33> offset;  // its symbol
    std::array<StreamHead, 1 << headBits> heads;  // by the first bits of what is left of a block
};

/// How one stream lays out its men.
struct TableSide {
    streamData* stream;  // null when the file has none for this side
    u64 tbSize;          // number of indices
    std::array<u64, tbMenMax> groupFactor;
    std::array<u8, tbMenMax> pieces;     // in index order, black men 8 higher
    std::array<u8, tbMenMax> groupSize;  // like men from here on, 0 inside a group
};

/// The streams for the two sides to move.
struct TableFile {
    std::array<TableSide, 2> side;
};

/// Head of a table's record. Written by tbAddTable, and under tbMutex when the table is first used.
struct tbEntry {
    TableMaterial material;
    TableFile* file;    // one without pawns, else four, by the file a to d of the leading pawn
    MappedFile data;    // empty until used
    Relaxed<u8> ready;  // set when the file has been mapped and set up
};

struct tbEntryPiece {
    tbEntry head;
    std::array<TableFile, 1> file;
};

struct tbEntryPawn {
    tbEntry head;
    std::array<TableFile, 4> file;
};

/// One group of a DTZ file: it stores one side to move.
struct DtzFile {
    TableSide side;
    u8 flags;  // DtzFlag bits
    std::array<u16, 4> valueMapStart;
    std::array<u8, 4> valueMapLength;
};

enum DtzFlag : u8 {
    DTZ_SIDE = 1,
    DTZ_MAPPED = 2,
    DTZ_WIN_PLIES = 4,
    DTZ_LOSS_PLIES = 8,
    CONSTANT_STREAM = 128
};

/// A DTZ table, allocated when it is loaded.
struct dtzEntry {
    TableMaterial material;
    MappedFile data;
    std::array<DtzFile, 4> file;  // the first alone without pawns
    const u8* valueMap;           // what valueMapStart counts from
};

// ---- registry -------------------------------------------------------------------------------------------------

constexpr i32 TBMAX_PIECE = 254;
constexpr i32 TBMAX_PAWN = 256;
constexpr i32 HSHMAX = 5;
constexpr i32 tbHashBuckets = 1024;
constexpr i32 tbPathSize = 256;
constexpr i32 tableNameSize = 16;

struct tbHashSlot {
    u64 key;  // 0 when the table has failed
    tbEntry* entry;
};
using tbHashBucket = std::array<tbHashSlot, HSHMAX>;

extern std::array<tbEntryPiece, TBMAX_PIECE> tbPiece;
extern std::array<tbEntryPawn, TBMAX_PAWN> tbPawn;
extern i32 tbPieceCount;
extern i32 tbPawnCount;
extern std::array<tbHashBucket, tbHashBuckets> tbHash;
extern char tbPathWdl[tbPathSize];
extern char tbPathDtz[tbPathSize];

/// Key of men counted as in TableMaterial, at most fifteen alike.
[[nodiscard]] u64 materialKeyOf(const std::array<u8, 16>& men, bool swapColours);

/// The men of a table name such as "KQRvKN".
[[nodiscard]] TableMaterial materialOfName(const char* name);

/// Registers the table if its WDL file can be opened. Ends the process with status 1 when a limit is passed.
void tbAddTable(const char* name);

/// Key of the men on `board`, with White, or with `swapColours` 1 Black, as the first side. At most fifteen alike.
[[nodiscard]] u64 materialKeyOfPosition(i32 swapColours);

/// Table name of the men on `board`, the first side White's, or with `swapColours` 1 Black's. At most six men.
void tableNameOfPosition(char (&text)[tableNameSize], i32 swapColours);

/// The record registered under `key`, or null.
[[nodiscard]] tbEntry* lookupTable(u64 key);

/// Takes a table out of the registry, under both colourings.
void dropTable(const TableMaterial& material);

// ---- index ----------------------------------------------------------------------------------------------------

using TablePos = std::array<i32, tbMenMax>;  // squares in the table's piece order

/// Fill groupSize from `pieces`: the leading group (pawns of a side with pawns, else three or two unlike men), then like
/// men together.
void setGroupsPiece(const TableMaterial& material, TableSide& side);
void setGroupsPawn(const TableMaterial& material, TableSide& side);
/// Fill groupFactor and return the number of indices. `pivotOrder`, and `pawnOrder` for the pawns that do not lead (15
/// without any), are the places of their groups in the order of the index, and must differ. `file` is the leading
/// pawn's, folded to 0 to 3.
u64 computeFactorsPiece(const TableMaterial& material, TableSide& side, i32 pivotOrder);
u64 computeFactorsPawn(const TableMaterial& material, TableSide& side, i32 pivotOrder, i32 pawnOrder,
                       i32 file);

/// Index of a position. `pos` holds different squares of the table's frame, kings apart, pawns on ranks 2 to 7, and is
/// changed.
[[nodiscard]] u64 indexPieces(const TableMaterial& material, const TableSide& side, TablePos& pos);
[[nodiscard]] u64 indexPawns(const TableMaterial& material, const TableSide& side, TablePos& pos);
/// Brings the pawn that leads to the front; its file, folded to 0 to 3.
[[nodiscard]] i32 leadPawnFile(const TableMaterial& material, TablePos& pos);

// ---- files ----------------------------------------------------------------------------------------------------

/// Maps and sets up the WDL table. Returns 1, or 0 after "Corrupted table."; ends the process with status 1 if the
/// file cannot be opened or mapped. Nothing of the file is trusted.
[[nodiscard]] i32 loadTableWdl(tbEntry& entry, const char* name);
/// Gives its streams and mapping back; the record may be loaded again.
void unloadTableWdl(tbEntry& entry);

/// Maps and sets up the DTZ table of that material, likewise; null if it is corrupted or there is no memory.
[[nodiscard]] dtzEntry* openTableDtz(const TableMaterial& material, const char* name);
/// Gives its memory and mapping back.
void closeTableDtz(dtzEntry* entry);

/// Set up a table whose material and data are there. False if the data is damaged: what has been set up until then
/// is for the unload functions.
[[nodiscard]] bool setUpTableWdl(tbEntry& entry);
[[nodiscard]] bool setUpTableDtz(dtzEntry& entry);

/// Fills `heads` from everything else.
void fillStreamHeads(streamData& d);

/// Value of a stream at `idx`, which is below its tbSize; -1 if the file is damaged.
[[nodiscard]] i32 decodeStream(const streamData& d, u64 idx);

// ---- distance tables in use -----------------------------------------------------------------------------------

struct dtzCacheRecord {
    u64 key1;
    u64 key2;
    dtzEntry* entry;  // null if the table could not be loaded
};

/// The DTZ tables in use, the latest first. No lock: only the thread that owns `board` probes them.
extern std::array<dtzCacheRecord, 64> dtzCache;

/// The table of the material of `key`, which is that of the position at `board`, loaded if need be; null without one.
[[nodiscard]] const dtzEntry* dtzEntryOf(u64 key);

/// Loads the DTZ table into the first place of dtzCache, over what stood there.
void loadTableDtz(const char* name, u64 key1, u64 key2);
/// Empties one place, or all.
void unloadTableDtz(dtzCacheRecord& record);
void clearDtzCache();

// ---- the stored values of a table -----------------------------------------------------------------------------

/// Whether the position may be probed: one king a side and not next to each other, no pawn on the first or last rank,
/// at most one man more than tables hold, for its captures may lead to tables. The limit keeps the search of captures
/// short on boards full of queens. No other position is ever looked up.
[[nodiscard]] bool mayBeProbed(const Scacchiera& b);

/// Win, draw or loss as a table stores it for the position at `board`, which may be probed, no captures looked at.
/// `success` becomes 0 when there is no table, as with more than six men; two bare kings are a draw without any.
[[nodiscard]] i32 probeWdlTable(i32& success);

/// The stored distance, not negative, of the position at `board`, whose value `wdl` (-2 to 2, not 0) is known.
/// `success` becomes 0 when there is no table and -1 when the table stores the other side to move.
[[nodiscard]] i32 probeDtzTable(i32 wdl, i32& success);

// ---- values with captures looked at ---------------------------------------------------------------------------

/// Win, draw or loss between the bounds of the position at `board`, en passant left out. `success` becomes 0 if the
/// tables do not know, 2 if a capture decides (the distance is then 1 or 101), else 1.
[[nodiscard]] i32 probeCaptures(i32 alpha, i32 beta, i32& success);

/// The distance to which a win or loss by the next move comes, by WDL + 2.
constexpr i32 wdlToDtz[5] = {-1, -101, 0, 101, 1};
