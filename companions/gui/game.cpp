// Repetitions and the fifty moves are counted here by the laws; the records on the stack carry the counts of the search,
// which are made for speed.
#include "game.h"

#include "fen_reader.h"
#include "frontend/session.h"

#include <algorithm>

constexpr i32 drawingOccurrences = 3;
constexpr i32 fiftyMovePlies = 100;

// ---- keys -----------------------------------------------------------------------------------------------------

static LawKey lawKeyOf(const Standing& standing) {
    const Scacchiera& record = standing.record;
    const bool epIsLegal = std::ranges::any_of(
        standing.legal, [](const LegalMove& legal) { return moveKind(legal.move) == EN_PASSANT; });
    return {record.side,        record.pbq,          record.nbk,
            record.rqk,         record.castleRights, epIsLegal ? record.epFile : noEpFile,
            blackToMove(record)};
}

static void notePosition(Game& game, i32 clock) {
    game.standing = standingHere();
    game.keys.push_back(lawKeyOf(game.standing));
    game.clocks.push_back(clock);
}

static void begin(Game& game, const std::string& fen) {
    newGame();
    fenToBoard(fen.c_str());  // key and score too, which a new game leaves to what stood before
    game = {};
    notePosition(game, board->rule50);
}

// ---- moves ----------------------------------------------------------------------------------------------------

void startGame(Game& game) {
    begin(game, startFen);
}

std::string setUpGame(Game& game, std::string_view fen) {
    const FenReading reading = readFen(fen);
    if (reading.fault.empty()) {
        begin(game, reading.fen);
    }
    return reading.fault;
}

static bool hasRoom(const Game& game) {
    return game.plies.size() + 2 < static_cast<std::size_t>(gameRecordsMax);
}

static bool startsClockAnew(Mossa move) {
    const i32 man = moveKind(move) & 7;
    const bool captures = (moveKind(move) & 8) != 0;
    return captures || man == PAWN;
}

std::string playMove(Game& game, std::string_view text, bool byEngine) {
    if (!game.illegalReason.empty()) {
        return game.illegalReason;
    }
    const LegalMove* const legal = findLegal(game.standing, text);
    if (legal == nullptr) {
        return whyIllegal(game.standing, text);
    }
    if (!hasRoom(game)) {
        return "the game is too long";
    }
    const i32 clock = startsClockAnew(legal->move) ? 0 : game.clocks.back() + 1;
    game.plies.push_back({legal->text, byEngine});
    makeMove(legal->move);
    notePosition(game, clock);
    return {};
}

bool takeBack(Game& game) {
    if (game.plies.empty()) {
        return false;
    }
    --board;
    game.plies.pop_back();
    game.keys.pop_back();
    game.clocks.pop_back();
    game.standing = standingHere();
    return true;
}

i32 engineMoves(const Game& game) {
    return static_cast<i32>(std::ranges::count_if(game.plies, &Ply::byEngine));
}

// ---- ends -----------------------------------------------------------------------------------------------------

// Bare kings, one knight, or bishops that all stand on squares of one colour: no series of moves mates.
static bool nobodyCanMate(const Scacchiera& record) {
    constexpr TBB lightSquares = 0x55AA55AA55AA55AAULL;
    const TBB men = occupied(record) & ~kings(record);
    if (popCount(men) <= 1 && (men & ~knights(record)) == 0) {
        return true;
    }
    const bool onlyBishops = (men & ~bishops(record)) == 0;
    return onlyBishops && ((men & lightSquares) == 0 || (men & ~lightSquares) == 0);
}

GameEnd endOf(const Game& game) {
    if (!game.illegalReason.empty()) {
        return GameEnd::none;
    }
    if (game.standing.legal.empty()) {
        return game.standing.inCheck ? GameEnd::checkmate : GameEnd::stalemate;
    }
    if (nobodyCanMate(game.standing.record)) {
        return GameEnd::material;
    }
    if (game.clocks.back() >= fiftyMovePlies) {
        return GameEnd::fiftyMoves;
    }
    if (std::ranges::count(game.keys, game.keys.back()) >= drawingOccurrences) {
        return GameEnd::repetition;
    }
    return GameEnd::none;
}

std::string resultLine(const Game& game, GameEnd end) {
    switch (end) {
        case GameEnd::checkmate:
            return blackToMove(game.standing.record) ? "1-0 {White mates}" : "0-1 {Black mates}";
        case GameEnd::stalemate:
            return "1/2-1/2 {Stalemate}";
        case GameEnd::repetition:
            return "1/2-1/2 {Draw by repetition}";
        case GameEnd::fiftyMoves:
            return "1/2-1/2 {Draw by 50 move rule}";
        case GameEnd::material:
            return "1/2-1/2 {Draw by insufficient material}";
        case GameEnd::none:
            break;
    }
    return {};
}
