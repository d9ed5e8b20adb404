// A folder of tables of which some are damaged, and a position of their men: the engine scans the folder, ranks the
// moves, searches three plies and shows what the tables tell. Tables that are not damaged keep their values.
//
// An input: most men that are probed, colours and capture in passing, plies without progress, the men; their squares, a
// byte each; then damages of five bytes. Not among them is what ends the process on purpose: a file that cannot be
// mapped, and a missing DTZ file.
#include "board/board.h"
#include "frontend/session.h"
#include "tablebase/tablebase.h"
#include "tables_in_use.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

constexpr std::size_t damagesMax = 24;
constexpr std::size_t headerBytes = 128;  // of a file: where most harm is done
constexpr std::size_t fileMax = 65536;

// Men of the tables, and of positions from which captures and promotions lead to them.
constexpr std::array<std::string_view, 20> menOfPositions = {
    "KQvK",  "KRvK",  "KBvK",  "KNvK",  "KPvK",   "KNNvK",  "KBvKB",  "KBvKN",  "KNvKN",   "KRvKR",
    "KPvKP", "KQvKR", "KRvKN", "KPvKR", "KBNvKN", "KRPvKR", "KPPvKP", "KNNvKP", "KPPPvKP", "KRRvKRR"};

namespace {

// A position whose values depend on one table alone, and how they were before any damage.
struct Control {
    std::string_view table;
    const char* fen;
    i32 wdl;
    i32 dtz;
};

// The tables of the tests, one for captures in passing, and what they tell while all are sound.
struct SoundFolder {
    TablesInUse tables;
    std::vector<Control> controls;

    SoundFolder();
};

// The damaged files by their place among the sound ones; an empty file is a missing one.
using Damages = std::map<std::size_t, std::string>;

}  // namespace

// A pawn each, all values alike: the side to move wins.
static std::string tableOfTwoPawns(std::string_view magic, i32 streams) {
    std::string bytes(magic);
    bytes += '\x03';  // two sides, four files
    for (i32 file = 0; file < 4; ++file) {
        bytes +=
            std::string_view("\x00\x11\x11\x99\x66\xEE", 6);  // places of two groups, then pawns and kings
    }
    bytes += '\0';
    for (i32 stream = 0; stream < streams; ++stream) {
        bytes += "\x80\x04";
    }
    return bytes;
}

static bool probeControl(const char* fen, i32& wdl, i32& dtz) {
    newGame();
    static_cast<void>(fenToBoard(fen));
    i32 wdlSuccess = 0;
    wdl = probeWdl(wdlSuccess);
    i32 dtzSuccess = 0;
    dtz = probeDtz(dtzSuccess);
    return wdlSuccess != 0 && dtzSuccess != 0;
}

SoundFolder::SoundFolder() : tables(TARVELMON_SOUND_TABLES) {
    tables.add({"KPvKP.rtbw", tableOfTwoPawns("\x71\xE8\x23\x5D", 8)});
    tables.add({"KPvKP.rtbz", tableOfTwoPawns("\xD7\x66\x0C\xA5", 4)});
    controls = {{"KQvK", "8/8/3k4/8/8/8/8/KQ6 w - -", 0, 0},
                {"KRvK", "8/8/3k4/8/8/8/8/KR6 w - -", 0, 0},
                {"KBvK", "8/8/3k4/8/8/8/8/KB6 b - -", 0, 0},
                {"KPvKP", "7k/7p/8/8/8/8/P7/K7 w - -", 0, 0}};
    tables.scan();
    for (Control& control : controls) {
        if (!probeControl(control.fen, control.wdl, control.dtz)) {
            std::abort();
        }
    }
}

static std::string takePosition(std::string_view& input) {
    const u8 choice = takeByte(input);
    const i32 clock = takeByte(input) % 128;
    const std::string_view men = menOfPositions[takeByte(input) % menOfPositions.size()];
    std::vector<i32> squares;
    for (std::size_t i = 0; i < men.size() - 1; ++i) {
        squares.push_back(takeByte(input) % 64);
    }
    const bool black = (choice & 1) != 0;
    const char file = static_cast<char>('a' + (choice >> 3 & 7));
    const std::string passing = (choice & 4) == 0 ? "-" : std::string(1, file) + (black ? "3" : "6");
    return placementOf(men, squares, (choice & 2) != 0) + (black ? " b" : " w") + " - " + passing + " " +
           std::to_string(clock) + " 1";
}

// Bytes of no damage change nothing.
static void applyDamage(std::string& bytes, u8 kind, std::size_t place, u8 value, const std::string& other) {
    place = (place & 0x8000) != 0 ? place % headerBytes : place;
    place = place % bytes.size();
    switch (kind % 8) {
        case 0:
            bytes[place] = static_cast<char>(bytes[place] ^ value);
            break;
        case 1:
            bytes[place] = static_cast<char>(value);
            break;
        case 2:
            bytes.resize(place + 1);
            break;
        case 3:
            bytes.erase(place, value);
            break;
        case 4:
            bytes.insert(place, 1, static_cast<char>(value));
            break;
        case 5:
            bytes = other;
            break;
        case 6:
            bytes.append(value, '\xFF');
            break;
        default:
            bytes.replace(place, 4, std::string(3, '\xFF') + static_cast<char>(value));
            break;
    }
    bytes.resize(std::clamp<std::size_t>(bytes.size(), 1, fileMax));
}

static Damages takeDamages(std::string_view& input, const std::vector<SoundTable>& sound) {
    constexpr u8 removal = 255;
    Damages damages;
    for (std::size_t i = 0; i < damagesMax && !input.empty(); ++i) {
        const std::size_t table = takeByte(input) % sound.size();
        const u8 kind = takeByte(input);
        const std::size_t place = takeByte(input) + std::size_t{256} * takeByte(input);
        const u8 value = takeByte(input);
        std::string& bytes = damages.try_emplace(table, sound[table].bytes).first->second;
        if (kind == removal && sound[table].name.ends_with(".rtbw")) {
            bytes.clear();
        } else if (!bytes.empty()) {
            applyDamage(bytes, kind, place, value, sound[value % sound.size()].bytes);
        }
    }
    return damages;
}

static void writeDamaged(const SoundFolder& all, const Damages& damages) {
    for (const auto& [table, bytes] : damages) {
        const std::string& name = all.tables.sound[table].name;
        if (bytes.empty()) {
            std::filesystem::remove(all.tables.folder.path / name);
        } else {
            all.tables.folder.write(name, bytes);
        }
    }
}

// One damaged table may not harm another. One of those that are sound is asked, not always the same.
static void checkControl(const SoundFolder& all, const Damages& damages, u8 choice) {
    const Control& control = all.controls[choice % all.controls.size()];
    const std::string files = std::string(control.table) + ".";
    const bool damaged = std::any_of(damages.begin(), damages.end(), [&](const auto& damage) {
        return all.tables.sound[damage.first].name.starts_with(files);
    });
    i32 wdl = 0;
    i32 dtz = 0;
    if (!damaged && (!probeControl(control.fen, wdl, dtz) || wdl != control.wdl || dtz != control.dtz)) {
        std::abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    static const SoundFolder all;
    std::string_view input = textOf(data, size);
    const u8 choice = takeByte(input);
    const std::string fen = takePosition(input);
    const Damages damages = takeDamages(input, all.tables.sound);
    writeDamaged(all, damages);
    all.tables.scan();
    static_cast<void>(rankRoot(fen));
    searchWithTables(fen, 3 + choice % 5);
    checkControl(all, damages, choice >> 4);
    for (const auto& damage : damages) {
        all.tables.restore(all.tables.sound[damage.first]);
    }
    return 0;
}
