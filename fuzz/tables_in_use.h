// A folder of endgame tables as the engine uses it: copies in memory, of which some may be damaged, and all that happens
// in a position from the scan of the folder to the move.
#pragma once

#include "fuzz_support.h"

#include <string>
#include <string_view>
#include <vector>

/// A whole file; aborts if it cannot be read.
[[nodiscard]] std::string bytesOfFile(const std::filesystem::path& file);

/// A sound file of a table.
struct SoundTable {
    std::string name;  // such as "KQvK.rtbw"
    std::string bytes;
};

/// A folder in memory with tables. Files are written over in place: the engine may have them mapped, but has to scan the
/// folder anew before it reads them again.
struct TablesInUse {
    ScratchFolder folder;
    std::vector<SoundTable> sound;  // by name

    /// Copies the tables of a folder.
    explicit TablesInUse(const std::filesystem::path& source);

    /// Adds a table.
    void add(SoundTable table);
    /// Writes a table as it was.
    void restore(const SoundTable& table) const;
    /// Registers what is in the folder now.
    void scan() const;
};

/// The placement field of a FEN: the men of a table's name such as "KQvK" on one square each, of those on the same square
/// the last. The first side is White or Black.
[[nodiscard]] std::string placementOf(std::string_view name, const std::vector<i32>& squares,
                                      bool firstIsWhite);

/// What the tables tell of a root.
struct RootValues {
    i32 probed;
    i32 dtz;
    i32 wdl;
    i32 tbScore;
    i32 kept;
    i64 rankSum;

    bool operator==(const RootValues&) const = default;
};

/// Sets up a position and has its moves ranked.
[[nodiscard]] RootValues rankRoot(const std::string& fen);

/// Sets up a position, searches it to a depth of three with tables of up to `men` men, and looks at it from the console.
/// Aborts if the board is not as before.
void searchWithTables(const std::string& fen, i32 men);
