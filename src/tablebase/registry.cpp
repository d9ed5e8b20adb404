// Which tables exist: at start-up every possible name is tried, and a record kept for each WDL file found, under keys
// of its material. No file is mapped here.
#include "tablebase/internal.h"

#include "hash/random64.h"
#include "platform/environment.h"
#include "platform/print.h"
#include "platform/split_mix.h"
#include "tablebase/tablebase.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

constinit std::array<tbEntryPiece, TBMAX_PIECE> tbPiece{};
constinit std::array<tbEntryPawn, TBMAX_PAWN> tbPawn{};
constinit i32 tbPieceCount = 0;
constinit i32 tbPawnCount = 0;
constinit std::array<tbHashBucket, tbHashBuckets> tbHash{};
char tbPathWdl[tbPathSize] = "";
char tbPathDtz[tbPathSize] = "";

constexpr std::size_t environmentMax = 99;

// ---- material keys --------------------------------------------------------------------------------------------

// 16 rows of 64 values: black men in the rows of their piece code, white men 8 rows further. The published numbers
// end in row 12; those after them are a fixed sequence (SplitMix64 from 0), with which no bucket of tbHash overflows.
static constexpr std::array<u64, 1024> makeMaterialKeyTable() {
    std::array<u64, 1024> table{};
    std::copy(Random64.begin(), Random64.end(), table.begin());
    u64 state = 0;
    for (std::size_t i = Random64.size(); i < table.size(); ++i) {
        table[i] = splitMix64(state);
    }
    return table;
}
static constexpr std::array<u64, 1024> materialKeyTable = makeMaterialKeyTable();

constexpr i32 alikeMax = 15;

// [row][n]: the first n values of a row of materialKeyTable, combined.
using MaterialSums = std::array<std::array<u64, alikeMax + 1>, 16>;
static constexpr MaterialSums makeMaterialSums() {
    MaterialSums sums{};
    for (i32 row = 0; row < 16; ++row) {
        for (i32 n = 0; n < alikeMax; ++n) {
            sums[row][n + 1] = sums[row][n] ^ materialKeyTable[row * 64 + n];
        }
    }
    return sums;
}
static constexpr MaterialSums materialSums = makeMaterialSums();

u64 materialKeyOf(const std::array<u8, 16>& men, bool swapColours) {
    const i32 firstSide = swapColours ? 0 : black;
    u64 key = 0;
    for (i32 code = PAWN; code <= KING; ++code) {
        key ^= materialSums[firstSide + code][men[code]] ^
               materialSums[(firstSide ^ black) + code][men[black + code]];
    }
    return key;
}

u64 materialKeyOfPosition(i32 swapColours) {
    const Scacchiera& b = *board;
    const bool sideIsFirst = blackToMove(b) == (swapColours != 0);
    const i32 own = sideIsFirst ? black : 0;
    const i32 other = own ^ black;
    const TBB kinds[] = {pawns(b), knights(b), bishops(b), rooks(b), queens(b)};
    u64 key = materialSums[KING][1] ^ materialSums[black + KING][1];
    for (i32 code = PAWN; code <= QUEEN; ++code) {
        const TBB set = kinds[code - PAWN];
        key ^= materialSums[own + code][popCount(set & b.side) & alikeMax] ^
               materialSums[other + code][popCount(set & ~b.side) & alikeMax];
    }
    return key;
}

// ---- names ----------------------------------------------------------------------------------------------------

static char* appendMen(char* text, TBB side) {
    const Scacchiera& b = *board;
    const TBB kinds[] = {kings(b), queens(b), rooks(b), bishops(b), knights(b), pawns(b)};
    constexpr char letters[] = "KQRBNP";
    for (i32 i = 0; i < 6; ++i) {
        text = std::fill_n(text, popCount(kinds[i] & side), letters[i]);
    }
    return text;
}

void tableNameOfPosition(char (&text)[tableNameSize], i32 swapColours) {
    const Scacchiera& b = *board;
    assert(popCount(occupied(b)) <= tbMenMax);
    const TBB firstSide = blackToMove(b) == (swapColours != 0) ? b.side : opponent(b);
    char* end = appendMen(text, firstSide);
    *end++ = 'v';
    end = appendMen(end, occupied(b) ^ firstSide);
    *end = '\0';
}

static i32 pieceCodeOfLetter(char letter) {
    constexpr char letters[] = "PNBRQK";  // by piece code, from PAWN
    const char* found = letter == '\0' ? nullptr : std::strchr(letters, letter);
    return found == nullptr ? EMPTY : PAWN + static_cast<i32>(found - letters);
}

static std::array<u8, 16> menOfName(const char* name) {
    std::array<u8, 16> men{};
    i32 colour = 0;
    for (; *name != '\0'; ++name) {
        if (*name == 'v') {
            colour = black;
        } else if (const i32 code = pieceCodeOfLetter(*name); code != EMPTY) {
            ++men[colour + code];
        }
    }
    return men;
}

// The index of a table without pawns starts with three men of which there is one each, if there are so many; two of
// them the kings are always there.
static u8 headKindOf(const std::array<u8, 16>& men) {
    return std::count(men.begin(), men.end(), u8{1}) >= 3 ? 0 : 2;
}

// The pawns of the side with fewer of them lead; a side without any never leads.
static void setLeadingPawns(TableMaterial& material) {
    const u8 white = material.men[PAWN];
    const u8 blackPawns = material.men[black + PAWN];
    const bool blackLeads = blackPawns != 0 && (white == 0 || white > blackPawns);
    material.pawns[0] = blackLeads ? blackPawns : white;
    material.pawns[1] = blackLeads ? white : blackPawns;
}

TableMaterial materialOfName(const char* name) {
    TableMaterial material{};
    material.men = menOfName(name);
    material.key = materialKeyOf(material.men, false);
    material.key2 = materialKeyOf(material.men, true);
    for (const u8 count : material.men) {
        material.num = static_cast<u8>(material.num + count);
    }
    material.symmetric = material.key == material.key2 ? 1 : 0;
    material.hasPawns = material.men[PAWN] + material.men[black + PAWN] != 0 ? 1 : 0;
    if (material.hasPawns != 0) {
        setLeadingPawns(material);
    } else {
        material.headKind = headKindOf(material.men);
    }
    return material;
}

// ---- the hash -------------------------------------------------------------------------------------------------

[[noreturn]] static void endWith(const char* words) {
    print("%s\n", words);
    exitNow(1);
}

static tbHashBucket& bucketOf(u64 key) {
    return tbHash[static_cast<u32>(key >> 54)];
}

static void addToHash(u64 key, tbEntry& entry) {
    for (tbHashSlot& slot : bucketOf(key)) {
        if (slot.entry == nullptr) {
            slot = tbHashSlot{key, &entry};
            return;
        }
    }
    endWith("HSHMAX too low!");
}

tbEntry* lookupTable(u64 key) {
    for (const tbHashSlot& slot : bucketOf(key)) {
        if (slot.key == key) {
            return slot.entry;
        }
    }
    return nullptr;
}

static void clearSlot(u64 key) {
    for (tbHashSlot& slot : bucketOf(key)) {
        if (slot.key == key) {
            slot.key = 0;
        }
    }
}

void dropTable(const TableMaterial& material) {
    clearSlot(material.key);
    clearSlot(material.key2);
}

// ---- the scan -------------------------------------------------------------------------------------------------

// Deliberate: every name is tried by opening its file, and the folder is never listed. Nothing is allocated for it.
static bool wdlFileExists(const char* name) {
    constexpr char suffix[] = ".rtbw";
    assert(std::strlen(name) < tableNameSize);
    char path[tbPathSize + tableNameSize + sizeof suffix];
    char* end = path;
    for (const char* part : {static_cast<const char*>(tbPathWdl), "/", name, suffix}) {
        end = std::copy_n(part, std::strlen(part), end);
    }
    *end = '\0';
    std::FILE* file = openRegularFile(path);
    if (file == nullptr) {
        return false;
    }
    std::fclose(file);
    return true;
}

static tbEntry& nextPieceEntry() {
    if (tbPieceCount == TBMAX_PIECE) {
        endWith("TBMAX_PIECE limit too low!");
    }
    tbEntryPiece& record = tbPiece[tbPieceCount++];
    record.head.file = record.file.data();
    return record.head;
}

static tbEntry& nextPawnEntry() {
    if (tbPawnCount == TBMAX_PAWN) {
        endWith("TBMAX_PAWN limit too low!");
    }
    tbEntryPawn& record = tbPawn[tbPawnCount++];
    record.head.file = record.file.data();
    return record.head;
}

void tbAddTable(const char* name) {
    if (!wdlFileExists(name)) {
        return;
    }
    const TableMaterial material = materialOfName(name);
    tbEntry& entry = material.hasPawns != 0 ? nextPawnEntry() : nextPieceEntry();
    entry.material = material;
    entry.ready = 0;
    addToHash(material.key, entry);
    if (material.key2 != material.key) {
        addToHash(material.key2, entry);
    }
}

constexpr char pieceLetters[] = "KQRBNP";  // 1 to 5 are the men beside the king

// Each "*" of the name stands for one of the letters. Hundreds of names are tried at a start, so nothing is printed here.
template <typename... Letters>
static void tryName(std::string name, Letters... letters) {
    for (const i32 letter : {letters...}) {
        name[name.find('*')] = pieceLetters[letter];
    }
    tbAddTable(name.c_str());
}

static void tryThreeMen() {
    for (i32 i = 1; i <= 5; ++i) {
        tryName("K*vK", i);
    }
}

static void tryFourMen() {
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            tryName("K*vK*", i, j);
        }
    }
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            tryName("K**vK", i, j);
        }
    }
}

static void tryFiveMen() {
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            for (i32 k = 1; k <= 5; ++k) {
                tryName("K**vK*", i, j, k);
            }
        }
    }
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            for (i32 k = j; k <= 5; ++k) {
                tryName("K***vK", i, j, k);
            }
        }
    }
}

static void trySixMenTwoEach() {
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            for (i32 k = i; k <= 5; ++k) {
                for (i32 l = k != i ? k : j; l <= 5; ++l) {
                    tryName("K**vK**", i, j, k, l);
                }
            }
        }
    }
}

static void trySixMenThreeToOne() {
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            for (i32 k = j; k <= 5; ++k) {
                // deliberate: from 0, so that names with a second king are tried too
                for (i32 l = 0; l <= 5; ++l) {
                    tryName("K***vK*", i, j, k, l);
                }
            }
        }
    }
}

static void trySixMenFourToNone() {
    for (i32 i = 1; i <= 5; ++i) {
        for (i32 j = i; j <= 5; ++j) {
            for (i32 k = j; k <= 5; ++k) {
                for (i32 l = k; l <= 5; ++l) {
                    tryName("K****vK", i, j, k, l);
                }
            }
        }
    }
}

// Deliberate: the words name other variables than those read.
static void readFolderVariables() {
    const auto replace = [](char(&path)[tbPathSize], const char* variable, const char* words) {
        std::string text;
        if (readEnvironment(variable, text) && text.size() <= environmentMax) {
            std::snprintf(path, sizeof path, "%s", text.c_str());
            print("%s\n", words);
        }
    };
    replace(tbPathDtz, "RTBZDIR", "$DTZDIR loaded");
    replace(tbPathWdl, "RTBWDIR", "$WDLDIR loaded");
}

static void clearRegistry() {
    for (i32 i = 0; i < tbPieceCount; ++i) {
        unloadTableWdl(tbPiece[i].head);
    }
    for (i32 i = 0; i < tbPawnCount; ++i) {
        unloadTableWdl(tbPawn[i].head);
    }
    clearDtzCache();
    tbPieceCount = 0;
    tbPawnCount = 0;
    tbHash.fill(tbHashBucket{});
}

void tbInit(const char* path) {
    clearRegistry();
    std::snprintf(tbPathDtz, sizeof tbPathDtz, "%s", path);
    std::snprintf(tbPathWdl, sizeof tbPathWdl, "%s", path);
    readFolderVariables();
    tryThreeMen();
    tryFourMen();
    tryFiveMen();
    trySixMenTwoEach();
    trySixMenThreeToOne();
    trySixMenFourToNone();
    print("Found %d tablebases.\n", tbPieceCount + tbPawnCount);
}
