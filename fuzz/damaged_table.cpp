// Damages one table in many ways and probes each: damaged_table FILE CUTS CHANGES SEED.
//
// CUTS files end early, at places spread over the whole; CHANGES files have one byte or a few changed at random; as many
// as CUTS have bytes taken out or put in. Random positions of the table's men are probed in every one, and in the sound
// file before and after: it knows many of them, and its values must stay. Then the file takes its place among copies of
// the other tables of its folder, which are mapped as in play: the moves of some positions are ranked and searched.
//
// Each trial is told on standard error before it runs, so that the last line names the culprit of a crash; the line
// after the last trial counts them. Exit status 0 if all went well, 1 if the sound file is not accepted, knows too
// little or changes its values; a signal ends the process if a trial takes too long.
#include "table_fuzz.h"
#include "tables_in_use.h"

#include <sys/time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

constexpr std::size_t headerBytes = 400;  // half of the changes are made here, where most harm is done
constexpr std::size_t positions = 200;
constexpr std::size_t positionsOfTrial = 20;
constexpr std::size_t positionsInUse = 2;  // of a trial, ranked and searched; more of the sound file
constexpr std::size_t soundPositionsInUse = 8;
constexpr int secondsOfTrial = 30;  // of processor time: the machine may be busy

namespace {

struct Table {
    std::string name;  // such as "KQvK"
    bool isDtz;
    std::string bytes;
    std::vector<std::string> fens;
};

using Random = std::mt19937_64;

}  // namespace

// Below `bound`, which is not 0. The same on every system.
static std::size_t below(Random& random, std::size_t bound) {
    return static_cast<std::size_t>(random() % bound);
}

static bool kingsTouch(int first, int second) {
    return std::abs(first / 8 - second / 8) <= 1 && std::abs(first % 8 - second % 8) <= 1;
}

// Squares for the men of a table name, kings apart and pawns where they may stand.
static std::vector<int> randomSquares(const std::string& men, Random& random) {
    while (true) {
        std::vector<int> squares;
        std::vector<int> kings;
        for (const char man : men) {
            const int square = static_cast<int>(man == 'P' ? 8 + below(random, 48) : below(random, 64));
            squares.push_back(square);
            if (man == 'K') {
                kings.push_back(square);
            }
        }
        std::vector<int> sorted = squares;
        std::sort(sorted.begin(), sorted.end());
        const bool apart = std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end();
        if (apart && !kingsTouch(kings[0], kings[1])) {
            return squares;
        }
    }
}

// Either side may be the name's first, and to move.
static std::string randomFen(const std::string& name, Random& random) {
    std::string men = name;
    men.erase(men.find('v'), 1);
    const std::vector<int> squares = randomSquares(men, random);
    const bool firstIsWhite = below(random, 2) == 0;
    return placementOf(name, squares, firstIsWhite) + (below(random, 2) == 0 ? " w - -" : " b - -");
}

// What the probes of the given positions told, each value before its success.
static std::vector<i32> valuesOf(const Table& table, std::size_t first, std::size_t count) {
    std::vector<i32> values;
    for (std::size_t i = first; i < first + count; ++i) {
        const char* fen = table.fens[i % table.fens.size()].c_str();
        i32 success = 0;
        if (!table.isDtz) {
            values.push_back(wdlOfPosition(fen, success));
            values.push_back(success);
            continue;
        }
        for (const i32 wdl : {-2, -1, 1, 2}) {
            values.push_back(dtzOfPosition(fen, wdl, success));
            values.push_back(success);
        }
    }
    return values;
}

// Whether the file was accepted; its values then.
static bool probeFile(const Table& table, std::string_view bytes, std::size_t first, std::size_t count,
                      std::vector<i32>& values) {
    const auto probe = [&] { values = valuesOf(table, first, count); };
    const char* name = table.name.c_str();
    return table.isDtz ? tryDtzFile(name, bytes, probe) : tryWdlFile(name, bytes, probe);
}

// How many of the values that were told are known.
static std::size_t knownOf(const std::vector<i32>& values) {
    std::size_t known = 0;
    for (std::size_t i = 1; i < values.size(); i += 2) {
        known += values[i] > 0 ? 1 : 0;
    }
    return known;
}

// What is told of the given positions with the file among the other tables. One without a byte cannot be mapped, which
// ends the process on purpose.
static std::vector<RootValues> useFile(const TablesInUse& others, const Table& table, std::string_view bytes,
                                       std::size_t first, std::size_t count) {
    std::vector<RootValues> values;
    if (bytes.empty()) {
        return values;
    }
    others.folder.write(table.name + (table.isDtz ? ".rtbz" : ".rtbw"), bytes);
    others.scan();
    for (std::size_t i = first; i < first + count; ++i) {
        const std::string& fen = table.fens[i % table.fens.size()];
        values.push_back(rankRoot(fen));
        searchWithTables(fen, tbMenMax);
    }
    tbInit("/dev/null");  // no table is left
    return values;
}

// A signal ends the process if a trial takes longer.
static void limitTime() {
    const itimerval timer{{0, 0}, {secondsOfTrial, 0}};
    setitimer(ITIMER_PROF, &timer, nullptr);
}

static std::string changed(std::string bytes, Random& random) {
    const std::size_t reach = below(random, 2) == 0 ? bytes.size() : std::min(bytes.size(), headerBytes);
    constexpr std::array<std::size_t, 6> counts = {1, 1, 1, 2, 3, 10};
    for (std::size_t i = counts[below(random, counts.size())]; i > 0; --i) {
        char& byte = bytes[below(random, reach)];
        byte = static_cast<char>(byte ^ static_cast<char>(1 + below(random, 255)));
    }
    return bytes;
}

// Ends in part number `part` of `parts` of the file.
static std::string cut(const std::string& bytes, std::size_t part, std::size_t parts, Random& random) {
    const std::size_t width = std::max<std::size_t>(1, bytes.size() / parts);
    const std::size_t end = bytes.size() * part / parts + below(random, width);
    return bytes.substr(0, std::min(end, bytes.size() - 1));
}

static std::string shifted(std::string bytes, Random& random) {
    const std::size_t place = below(random, bytes.size());
    const std::size_t count = 1 + below(random, 16);
    if (below(random, 2) == 0) {
        return bytes.erase(place, count);
    }
    return bytes.insert(place, count, static_cast<char>(below(random, 256)));
}

static Table readTable(const std::filesystem::path& file, Random& random) {
    Table table{file.stem().string(), file.extension() == ".rtbz", bytesOfFile(file), {}};
    for (std::size_t i = 0; i < positions; ++i) {
        table.fens.push_back(randomFen(table.name, random));
    }
    return table;
}

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fputs("usage: damaged_table FILE CUTS CHANGES SEED\n", stderr);
        return 2;
    }
    int names = 1;  // the arguments are not the fuzzer's
    LLVMFuzzerInitialize(&names, &argv);
    const std::size_t cuts = std::strtoul(argv[2], nullptr, 10);
    const std::size_t changes = std::strtoul(argv[3], nullptr, 10);
    Random random(std::strtoull(argv[4], nullptr, 10));
    const Table table = readTable(argv[1], random);
    const TablesInUse others(std::filesystem::path(argv[1]).parent_path());
    std::vector<i32> sound;
    if (!probeFile(table, table.bytes, 0, positions, sound) || knownOf(sound) < positions / 10) {
        std::fprintf(stderr, "%s is not accepted\n", argv[1]);
        return 1;
    }
    const std::vector<RootValues> soundInUse = useFile(others, table, table.bytes, 0, soundPositionsInUse);
    std::size_t tried = 0;
    std::size_t accepted = 0;
    const auto attempt = [&](const char* damage, const std::string& bytes) {
        std::fprintf(stderr, "%s %zu\n", damage, tried);
        limitTime();
        std::vector<i32> values;
        accepted += probeFile(table, bytes, tried * positionsOfTrial, positionsOfTrial, values) ? 1 : 0;
        useFile(others, table, bytes, tried * positionsInUse, positionsInUse);
        ++tried;
    };
    for (std::size_t i = 0; i < cuts; ++i) {
        attempt("cut", cut(table.bytes, i, cuts, random));
    }
    for (std::size_t i = 0; i < changes; ++i) {
        attempt("change", changed(table.bytes, random));
    }
    for (std::size_t i = 0; i < cuts; ++i) {
        attempt("shift", shifted(table.bytes, random));
    }
    std::vector<i32> after;
    if (!probeFile(table, table.bytes, 0, positions, after) || after != sound ||
        useFile(others, table, table.bytes, 0, soundPositionsInUse) != soundInUse) {
        std::fprintf(stderr, "%s: values changed\n", argv[1]);
        return 1;
    }
    std::fprintf(stderr, "%zu tried, %zu accepted\n", tried, accepted);
    return 0;
}
