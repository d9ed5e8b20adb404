// A folder of endgame tables as the engine uses it.
#include "tables_in_use.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/internal.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "search/ordering.h"
#include "search/search.h"
#include "tablebase/tablebase.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

constexpr i32 searchDepth = 3;
constexpr i32 searchTime = 500;  // centiseconds: none takes so long

static bool isTable(const std::filesystem::path& file) {
    return file.extension() == ".rtbw" || file.extension() == ".rtbz";
}

std::string bytesOfFile(const std::filesystem::path& file) {
    std::string bytes(static_cast<std::size_t>(std::filesystem::file_size(file)), '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream) {
        std::perror(file.c_str());
        std::abort();
    }
    return bytes;
}

TablesInUse::TablesInUse(const std::filesystem::path& source) {
    for (const auto& entry : std::filesystem::directory_iterator(source)) {
        if (isTable(entry.path())) {
            add({entry.path().filename().string(), bytesOfFile(entry.path())});
        }
    }
}

void TablesInUse::add(SoundTable table) {
    restore(table);
    const auto behind = std::upper_bound(
        sound.begin(), sound.end(), table,
        [](const SoundTable& first, const SoundTable& second) { return first.name < second.name; });
    sound.insert(behind, std::move(table));
}

void TablesInUse::restore(const SoundTable& table) const {
    folder.write(table.name, table.bytes);
}

void TablesInUse::scan() const {
    tbInit(folder.path.c_str());
}

std::string placementOf(std::string_view name, const std::vector<i32>& squares, bool firstIsWhite) {
    std::string diagram(64, '1');
    std::size_t next = 0;
    bool isWhite = firstIsWhite;
    for (const char letter : name) {
        if (letter == 'v') {
            isWhite = !firstIsWhite;
        } else {
            const i32 square = squares[next++];
            diagram[static_cast<u32>(square)] = isWhite ? letter : static_cast<char>(letter - 'A' + 'a');
        }
    }
    std::string field;
    for (u32 rank = 8; rank-- > 0;) {
        field += diagram.substr(std::size_t{8} * rank, 8);
        field += rank > 0 ? "/" : "";
    }
    return field;
}

RootValues rankRoot(const std::string& fen) {
    newGame();
    static_cast<void>(fenToBoard(fen.c_str()));
    static RootList list;
    RootValues values{};
    rootMoves(list, values.kept);
    values.probed = rootProbe(list, values.kept, values.tbScore, values.dtz);
    for (i32 i = 0; i < values.kept && values.probed != 0; ++i) {
        values.rankSum += i64{i + 1} * list[static_cast<u32>(i)].tbRank;
    }
    i32 success = 0;
    values.wdl = probeWdl(success);
    return values;
}

static void setUpSearch(i32 men) {
    static const bool allocated = [] {
        EngineOptions.hashEntries = 65536;
        EngineOptions.pawnHashEntries = 4096;
        hashAlloc(EngineOptions.hashEntries, 1);
        pawnHashAlloc();
        return true;
    }();
    EngineOptions.postThinking = allocated ? 1 : 0;
    EngineOptions.syzygy = 1;
    EngineOptions.syzygyMen = men;
    EngineOptions.minDepth = 1;
    EngineOptions.maxDepth = searchDepth;
    EngineOptions.stopSearch = 0;
    TimeControl.moveTime = searchTime;
    TimeControl.allocatedTime = searchTime;
    EngineOptions.searchStartMs = nowMs();
}

void searchWithTables(const std::string& fen, i32 men) {
    setUpSearch(men);
    newGame();
    static_cast<void>(fenToBoard(fen.c_str()));
    const Scacchiera* before = board;
    static_cast<void>(think(0));
    static_cast<void>(walkDiagnostics("w"));
    if (board != before) {
        std::abort();
    }
}
