// What a person may set: read from the INI file as the engine reads it, changed by the interface, and handed to the core
// before each search. Changes never reach a running search.
#pragma once

#include "platform/bits.h"

#include <string>
#include <string_view>

struct Settings {
    i32 hashMegabytes;
    i32 pawnHashMegabytes;
    bool ownBook;
    bool randomBook;
    bool analyseMode;  // no book
    std::string bookFile;
    bool tables;
    std::string tablePath;
    i32 tableMen;
    bool ponder;  // only tells a UCI interface that it may
    i32 moveOverheadMs;
    i32 safePly;
    i32 minDepth;
    i32 maxDepth;
    i32 maxTime;  // centiseconds
    i32 suddenDeath;
    i32 moreTime;
    i32 lessTime;
    i32 fastGame;
    i32 fastOpening;  // as it is added to the divisor
};

extern Settings settings;

/// Reads the INI file of the working directory, or else of the user's folder, which then becomes the working directory,
/// so that names without a folder mean the same as to the engine.
void loadSettings();

/// Hands the settings to the core, and brings hash tables and tablebases in line with them where they have changed.
/// With no search running. What the core prints goes out as comments.
void applySettings();

/// The next applySettings empties both hash tables.
void wantEmptyTables();

/// Both protocols' words for the options, and the one way of setting them.
enum class Side : u8 { uci, xboard };

/// "option name ..." lines, or the text of each `feature option=...`, one a line.
[[nodiscard]] std::string describeOptions(Side side);

/// Sets an option. Names are compared without case. Returns an empty text, or what is wrong.
[[nodiscard]] std::string setOption(Side side, std::string_view name, std::string_view value);

/// The same for the table of positions alone, held to what it may be.
void setHashMegabytes(i64 megabytes);
void setTablePath(std::string_view path);
