// The positions of all games are one stream of work; a game is written when all of its own and all before it are done.
#include "games.h"

#include "annotation.h"
#include "file_checks.h"
#include "line_source.h"
#include "output.h"
#include "page.h"
#include "words.h"
#include "worker_pool.h"

#include <deque>
#include <nlohmann/json.hpp>
#include <unordered_map>

namespace {

struct Entry {
    Game game;
    std::string file;
    std::vector<Analysis> analyses;
    std::size_t missing;  // analyses that are still to come
    bool done;
    std::string output;
    JudgedGame judged;  // once done
};

// Where a position that was handed out belongs.
struct Place {
    u64 game;
    std::size_t ply;
};

struct Work {
    const Options& options;
    Progress progress{};
    std::vector<std::string> texts{};  // of the files
    std::size_t file = 0;
    GameText text{};
    u64 gameNumber = 0;
    std::deque<Entry> queue{};
    u64 firstInQueue = 0;
    std::size_t givenPlies = 0;  // of the last game in the queue
    bool inGame = false;
    std::vector<Place> places{};
    std::unordered_map<std::string, std::string> earlier{};
    std::vector<JudgedGame> judged{};  // for the page
    u64 usable = 0;
    bool outputHolds = true;
};

}  // namespace

static bool writeReady(Work& work) {
    std::string text;
    while (!work.queue.empty() && work.queue.front().done) {
        Entry& entry = work.queue.front();
        text += entry.output;
        if (!work.options.htmlFile.empty() && !entry.judged.moves.empty()) {
            work.judged.push_back(std::move(entry.judged));
        }
        work.queue.pop_front();
        ++work.firstInQueue;
        ++work.progress.done;
    }
    work.outputHolds = work.outputHolds && writeOut(text);
    return work.outputHolds;
}

// ---- an earlier output ----------------------------------------------------------------------------------------

// Of the search behind a move, as an annotation tells it; -1 if none does.
static i64 toldDepth(const GameMove& move) {
    constexpr std::string_view command = "[%depth ";
    i64 depth = -1;
    for (const GameItem& item : move.after) {
        const std::size_t at = item.kind == ItemKind::comment ? item.text.rfind(command) : std::string::npos;
        if (at != std::string::npos) {
            depth = numberOr(std::string_view(item.text).substr(at + command.size()), -1);
        }
    }
    return depth;
}

// Whether each move has its annotation; a mate has none, and a stalemate that of depth 0.
static bool isAnnotated(const Game& game, const Limits& limits) {
    for (const GameMove& move : game.moves) {
        const i64 depth = toldDepth(move);
        const bool isLast = &move == &game.moves.back();
        const bool isEnd = isLast && (depth == 0 || (depth < 0 && move.san.ends_with('#')));
        if (!isEnd && (depth < 0 || !isAnswerTo(limits, depth))) {
            return false;
        }
    }
    return true;
}

static void noteEarlierGames(Work& work, const std::string& text) {
    GameText games{text};
    Game game;
    while (nextGame(games, game)) {
        if (game.ended && game.fault.empty() && isAnnotated(game, work.options.limits)) {
            work.earlier[gameKey(game)] = game.raw + "\n\n";
        }
    }
}

static std::string readEarlier(Work& work) {
    std::string text;
    std::string fault = readWhole(work.options.resumeFile, text);
    if (fault.empty()) {
        noteEarlierGames(work, text);
    }
    return fault;
}

// ---- what comes in --------------------------------------------------------------------------------------------

static bool takeGame(Work& work, Game& game) {
    while (work.file < work.texts.size() && work.gameNumber < work.options.lines.last) {
        if (!nextGame(work.text, game)) {
            ++work.file;
            work.text = {work.file < work.texts.size() ? std::string_view(work.texts[work.file]) : ""};
        } else if (++work.gameNumber >= work.options.lines.first) {
            return true;
        }
    }
    return false;
}

static std::string faultJson(const Game& game) {
    const nlohmann::json object{{"error", game.fault}, {"line", game.faultLine}, {"tags", game.tags}};
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

// Puts the next game into the queue. True if it has to be searched.
static bool beginGame(Work& work, Game& game) {
    Entry& entry =
        work.queue.emplace_back(Entry{std::move(game), work.options.files[work.file], {}, 0, true, {}, {}});
    if (!entry.game.fault.empty()) {
        complain(work.progress, shownName(entry.file) + ":" + std::to_string(entry.game.faultLine) + ": " +
                                    entry.game.fault + "; the game is left as it is");
        entry.output = work.options.json ? faultJson(entry.game) : entry.game.raw + "\n\n";
        return false;
    }
    ++work.usable;
    if (const auto found = work.earlier.find(gameKey(entry.game)); found != work.earlier.end()) {
        entry.output = found->second;
        return false;
    }
    entry.missing = entry.game.moves.size() + 1;
    entry.analyses.resize(entry.missing);
    entry.done = false;
    return true;
}

static Position positionAt(const Game& game, std::size_t ply) {
    Position position{game.fen, {}};
    for (std::size_t i = 0; i < ply; ++i) {
        position.moves.push_back(game.moves[i].move);
    }
    return position;
}

static NextPosition nextPosition(Work& work, Position& position) {
    while (!work.inGame) {
        Game game;
        if (!work.outputHolds || !takeGame(work, game)) {
            return NextPosition::noMore;
        }
        work.inGame = beginGame(work, game);
        work.givenPlies = 0;
        static_cast<void>(writeReady(work));
    }
    const Game& game = work.queue.back().game;
    work.places.push_back({work.firstInQueue + work.queue.size() - 1, work.givenPlies});
    position = positionAt(game, work.givenPlies);
    ++work.givenPlies;
    work.inGame = work.givenPlies <= game.moves.size();
    return NextPosition::given;
}

static bool takeAnswer(Work& work, u64 number, const Analysis& analysis) {
    const Place place = work.places[number];
    Entry& entry = work.queue[place.game - work.firstInQueue];
    entry.analyses[place.ply] = analysis;
    if (!analysis.fault.empty()) {
        complain(work.progress, shownName(entry.file) + ":" + std::to_string(entry.game.line) +
                                    ": half move " + std::to_string(place.ply) + ": " + analysis.fault);
    }
    if (--entry.missing > 0) {
        return true;
    }
    entry.judged = judgeGame(entry.game, entry.analyses);
    entry.output = work.options.json
                       ? annotatedJson(entry.game, entry.analyses, entry.judged)
                       : annotatedGame(entry.game, entry.analyses, entry.judged, work.options.threshold);
    entry.done = true;
    ++work.progress.searched;
    return writeReady(work);
}

// ---- the whole ------------------------------------------------------------------------------------------------

// Lines end in one way, so that what is kept of the input does not mix two.
static void endLinesPlainly(std::string& text) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') {
            text[kept++] = text[i];
        }
    }
    text.resize(kept);
}

static std::string readAll(Work& work) {
    for (const std::string& file : work.options.files) {
        std::string fault = readWhole(file, work.texts.emplace_back());
        if (!fault.empty()) {
            return fault;
        }
        endLinesPlainly(work.texts.back());
    }
    work.text = {work.texts.front()};
    return work.options.resumeFile.empty() ? "" : readEarlier(work);
}

// Tags that begin a game's head, roughly: for the time left.
static u64 countGames(const Work& work) {
    u64 count = 0;
    for (const std::string& text : work.texts) {
        for (std::size_t at = text.find("[Event "); at != std::string::npos;
             at = text.find("[Event ", at + 1)) {
            ++count;
        }
    }
    return count;
}

i32 analyseGames(const Options& options) {
    Work work{options};
    work.progress = startProgress(0);
    std::string fault = checkFiles(options);
    fault = fault.empty() ? readAll(work) : fault;
    if (!fault.empty()) {
        complain(work.progress, fault);
        return 1;
    }
    work.progress.total = countGames(work);
    const PoolEnd end =
        runPool({options.jobs, options.hashMegabytes, options.limits,
                 [&](Position& position) { return nextPosition(work, position); }, [] { return -1; },
                 [&](u64 number, const Analysis& analysis) { return takeAnswer(work, number, analysis); },
                 [&] { showProgress(work.progress, false); }});
    endProgress(work.progress);
    if (end != PoolEnd::done || !work.outputHolds) {
        return statusOfEnd(end, work.progress);
    }
    if (work.usable == 0) {
        complain(work.progress, "tarvelmon-analyse: there is no game in the input");
        return 1;
    }
    if (!options.htmlFile.empty()) {
        fault = writePage(options.htmlFile, gamesPage(work.judged, options.threshold));
    }
    if (!fault.empty()) {
        complain(work.progress, fault);
    }
    return fault.empty() ? 0 : 1;
}
