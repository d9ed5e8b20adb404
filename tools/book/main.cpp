// tarvelmon-book: makes opening books of text and games, shows, merges and checks them. Exit status 0 for success, 1
// for a failure or a faulty book, 2 for arguments that it does not know.
#include "board/board.h"
#include "book/book.h"
#include "book_builder.h"
#include "book_check.h"
#include "book_file.h"
#include "frontend/session.h"
#include "line_reader.h"
#include "move_reader.h"
#include "pgn_reader.h"
#include "platform/environment.h"
#include "platform/platform.h"
#include "text_file.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <vector>

using Arguments = std::vector<std::string>;

constexpr i32 success = 0;
constexpr i32 failure = 1;
constexpr i32 wrongUsage = 2;

constexpr const char* helpText =
    "tarvelmon-book: opening books in the Polyglot format for the tarvelmon chess engine\n"
    "\n"
    "tarvelmon-book build -o BOOK [--max-ply N] [--min-count N] FILE...\n"
    "    Makes a book of files. A file whose name ends in .pgn holds games, any other holds opening lines.\n"
    "    A move's weight is how often it occurs. Of each line or game the first N moves of both sides\n"
    "    count (--max-ply, 1 to 400, default 40). Moves that occur less than N times are left out\n"
    "    (--min-count, default 1). A faulty line of openings stops the work; of a faulty game the moves\n"
    "    before the fault count.\n"
    "\n"
    "    A file of opening lines has one line of play for each line, from the start position, in short\n"
    "    notation or coordinates, with or without move numbers:\n"
    "        # text up to the end of the line is for the reader, and so is a line in brackets\n"
    "        [Ruy Lopez]\n"
    "        1. e4 e5 2. Nf3 Nc6 3. Bb5 a6\n"
    "        5: e4 e5 Nf3 Nf6          # counts five times\n"
    "        e4 e5 Nf3 f6? Nxe5        # f6 is answered, but not played\n"
    "\n"
    "tarvelmon-book show BOOK [MOVE... | FEN]\n"
    "    Prints what the book holds after the moves, or for the position; without them, for the start.\n"
    "\n"
    "tarvelmon-book merge -o BOOK FIRST SECOND...\n"
    "    Puts books together; weights of moves that several have are added.\n"
    "\n"
    "tarvelmon-book check BOOK\n"
    "    Tells whether the book is sorted and readable and its moves are legal, as far as its positions are\n"
    "    met from the start position.\n"
    "\n"
    "The engine picks at random among a position's moves, whatever their weights, or with RandBook=0 plays\n"
    "the first: books made here have the heaviest first.\n"
    "\n"
    "Keys: the engine never counts an en passant right in a position's key. The format's own description\n"
    "does where a pawn stands beside the pushed one. Books made here use the engine's keys, so that it "
    "finds\n"
    "them; in books of other programs it does not find those few positions.\n";

static i32 sayUsage(const char* fault) {
    std::fprintf(stderr, "tarvelmon-book: %s\nTry: tarvelmon-book help\n", fault);
    return wrongUsage;
}

// ---- options ----------------------------------------------------------------------------------------------------

struct Options {
    std::string output;
    i32 maxPly = 40;
    i32 minCount = 1;
    Arguments files;
    const char* fault = nullptr;
};

// Takes a number from `lowest` to `highest`; anything else leaves `number` and is a fault.
static bool readNumber(const std::string& text, i32 lowest, i32 highest, i32& number) {
    i32 value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < lowest || value > highest) {
        return false;
    }
    number = value;
    return true;
}

static Options readOptions(const Arguments& arguments) {
    constexpr i32 maxPlyLimit = 400;
    constexpr i32 minCountLimit = 1'000'000'000;
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (word == "-o") {
            options.output = value;
            ++i;
        } else if (word == "--max-ply") {
            options.fault = readNumber(value, 1, maxPlyLimit, options.maxPly)
                                ? options.fault
                                : "--max-ply wants a number from 1 to 400";
            ++i;
        } else if (word == "--min-count") {
            options.fault = readNumber(value, 1, minCountLimit, options.minCount)
                                ? options.fault
                                : "--min-count wants a number";
            ++i;
        } else if (word.starts_with("-")) {
            options.fault = "there is no such option";
        } else {
            options.files.push_back(word);
        }
    }
    return options;
}

// ---- commands ---------------------------------------------------------------------------------------------------

static bool isPgnName(const std::string& name) {
    constexpr std::string_view suffix = ".pgn";
    const auto sameLetter = [](char a, char b) { return (a | ' ') == b; };
    return name.size() >= suffix.size() &&
           std::equal(suffix.begin(), suffix.end(), name.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                      [&](char a, char b) { return sameLetter(b, a); });
}

// Returns false if the file cannot be read, or is a file of opening lines with a fault.
static bool addFile(BookBuilder& builder, const std::string& name) {
    std::string text;
    if (!readFile(name, text)) {
        return false;
    }
    FaultLog log{};
    const bool isPgn = isPgnName(name);
    const u64 count =
        isPgn ? readPgnGames(builder, log, name, text) : readOpeningLines(builder, log, name, text);
    std::printf("%s: %" PRIu64 " %s, %" PRIu64 " faulty\n", name.c_str(), count, isPgn ? "games" : "lines",
                log.count);
    return isPgn || log.count == 0;
}

static i32 saveAndSay(const std::string& name, const BookRecords& records) {
    if (records.empty()) {
        std::fprintf(stderr, "tarvelmon-book: there is no move to write\n");
        return failure;
    }
    if (!saveBook(name, records)) {
        return failure;
    }
    std::printf("%s: %zu records\n", name.c_str(), records.size());
    return success;
}

static i32 runBuild(const Arguments& arguments) {
    const Options options = readOptions(arguments);
    if (options.fault != nullptr) {
        return sayUsage(options.fault);
    }
    if (options.output.empty() || options.files.empty()) {
        return sayUsage("build wants -o BOOK and at least one file");
    }
    BookBuilder builder{options.maxPly, {}};
    for (const std::string& name : options.files) {
        if (!addFile(builder, name)) {
            return failure;
        }
    }
    return saveAndSay(options.output, recordsOf(builder, static_cast<u64>(options.minCount)));
}

static i32 runMerge(const Arguments& arguments) {
    const Options options = readOptions(arguments);
    if (options.fault != nullptr) {
        return sayUsage(options.fault);
    }
    if (options.output.empty() || options.files.size() < 2) {
        return sayUsage("merge wants -o BOOK and at least two books");
    }
    BookRecords merged;
    for (const std::string& name : options.files) {
        LoadedBook book{};
        if (!loadBook(name, book)) {
            return failure;
        }
        merged = mergeBooks(merged, book.records);
    }
    return saveAndSay(options.output, merged);
}

static i32 runCheck(const Arguments& arguments) {
    if (arguments.size() != 1) {
        return sayUsage("check wants one book");
    }
    LoadedBook book{};
    if (!loadBook(arguments[0], book)) {
        return failure;
    }
    const BookReport report = checkBook(book);
    printReport(report);
    return isSound(report) ? success : failure;
}

static std::string joined(Arguments::const_iterator first, Arguments::const_iterator last) {
    std::string text;
    for (; first != last; ++first) {
        text += (text.empty() ? "" : " ") + *first;
    }
    return text;
}

// Sets the board up by a FEN or by moves, in one argument or in several.
static bool setPosition(const std::string& text) {
    newGame();
    if (text.find('/') != std::string::npos) {
        const bool read = fenToBoard(text.c_str()) != 0;
        if (!read) {
            std::fprintf(stderr, "tarvelmon-book: \"%s\" is not a position\n", text.c_str());
        }
        return read;
    }
    constexpr std::size_t longestGame = 400;
    std::size_t plies = 0;
    for (std::size_t start = 0; (start = text.find_first_not_of(' ', start)) != std::string::npos;) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        const std::string word = text.substr(start, end - start);
        const ReadMove read = readMoveText(word);
        if (read.fault != nullptr || ++plies > longestGame) {
            std::fprintf(stderr, "tarvelmon-book: \"%s\" %s\n", word.c_str(),
                         read.fault != nullptr ? read.fault : "is one move too many");
            return false;
        }
        makeMove(read.move);
        start = end;
    }
    return true;
}

static i32 runShow(const Arguments& arguments) {
    if (arguments.empty()) {
        return sayUsage("show wants a book");
    }
    LoadedBook book{};
    if (!loadBook(arguments[0], book) || !setPosition(joined(arguments.begin() + 1, arguments.end()))) {
        return failure;
    }
    const u64 key = polyglotKey();
    u64 sum = 0;
    for (const BookRecord& record : book.records) {
        sum += record.key == key ? record.weight : 0;
    }
    std::printf("key %016" PRIx64 "\n", key);
    for (const BookRecord& record : book.records) {
        if (record.key != key) {
            continue;
        }
        char text[6];
        bookMoveText(text, record.move);
        const double share =
            sum == 0 ? 0.0 : static_cast<double>(record.weight) * 100.0 / static_cast<double>(sum);
        std::printf("%-5s  weight %5u  %6.2f%%\n", text, u32{record.weight}, share);
    }
    if (std::none_of(book.records.begin(), book.records.end(),
                     [key](const auto& r) { return r.key == key; })) {
        std::printf("no moves\n");
    }
    return success;
}

static i32 run(const std::string& command, const Arguments& arguments) {
    if (command == "build") {
        return runBuild(arguments);
    }
    if (command == "show") {
        return runShow(arguments);
    }
    if (command == "merge") {
        return runMerge(arguments);
    }
    if (command == "check") {
        return runCheck(arguments);
    }
    if (command == "help" || command == "--help" || command == "-h") {
        std::fputs(helpText, stdout);
        return success;
    }
    return sayUsage(command.empty() ? "a command is missing" : "there is no such command");
}

i32 main(i32 argc, char** argv) {
    makeStreamsBinary();
    try {
        const Arguments words = programArguments(argc, argv);
        return words.empty() ? run("", {}) : run(words.front(), Arguments(words.begin() + 1, words.end()));
    } catch (const std::bad_alloc&) {
        // A book is held in memory whole.
        std::fputs("tarvelmon-book: there is not enough memory\n", stderr);
        return failure;
    }
}
