// Syzygy endgame tablebases of up to six men.
#pragma once

#include "board/board.h"
#include "search/root_list.h"

/// Most men of a position that is probed. Tables hold one less, to which a capture may lead.
constexpr i32 probeMenMax = 7;

/// Score of a win by the tablebases at any distance, centipawns.
constexpr i32 TB_WIN = 10000;

/// Finds out which tables exist in the directory `path` (or those named by RTBWDIR and RTBZDIR) and prints their
/// number. Opens no table for reading. Ends the process with status 1 when a limit of the registry is passed.
void tbInit(const char* path);

/// Win, draw or loss of the position at `board` for the side to move: -2 loss, -1 loss saved by the fifty-move rule,
/// 0 draw, 1 win spoiled by it, 2 win. `success` becomes 0 if the tables do not know. Makes moves, which count as nodes.
i32 probeWdl(i32& success);

/// Distance to a zeroing move in plies, positive for the winner; beyond 100 the fifty-move rule spoils it; 0 draw.
/// `success` becomes 0 if the tables do not know; deliberate: without en passant, a failed distance table still gives
/// the least distance of the result, plus or minus 1 or 101.
i32 probeDtz(i32& success);

/// Ranks the legal moves in `rootList` by tbRank and keeps those that keep the result. Returns 1, or 0 if a probe
/// failed: the list then stands as it was but for some tbRank. `rootCount` can only go down.
/// tbScore  becomes the score to show, centipawns. dtz  becomes the root's value.
i32 rootProbe(RootList& rootList, i32& rootCount, i32& tbScore, i32& dtz);

/// Checks probes against "TestSyzygy/TestCase_09.txt". Ends the process with status 1 if its files cannot be opened.
void syzygyTest();
