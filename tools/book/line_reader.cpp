// Reads opening lines, a line of the file at a time.
#include "line_reader.h"

#include "frontend/session.h"
#include "move_reader.h"

#include <algorithm>
#include <charconv>

constexpr std::string_view blanks = " \t\r\v\f";

// Takes the first word off `text`; empty if there is none.
static std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text.remove_prefix(word.size());
    return word;
}

// "12." and "12..." before a move, with or without a blank between. A result or a castling with zeros is no number.
static std::string_view withoutMoveNumber(std::string_view word) {
    const std::size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
    if (digits == 0 || digits == word.size() || word[digits] != '.') {
        return word;
    }
    word.remove_prefix(digits);
    word.remove_prefix(std::min(word.find_first_not_of('.'), word.size()));
    return word;
}

static bool isNumber(std::string_view word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
}

struct LineWeight {
    u64 times;
    const char* fault;
};

// Takes "5:" off the start of `text`.
static LineWeight takeWeight(std::string_view& text) {
    constexpr u64 timesMax = 65535;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return {1, nullptr};
    }
    std::string_view head = text.substr(0, colon);
    const std::string_view digits = takeWord(head);
    u64 times = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), times);
    const bool whole =
        isNumber(digits) && takeWord(head).empty() && error == std::errc{} && times <= timesMax;
    if (!whole) {
        return {0, "has no number up to 65535 before the colon"};
    }
    text.remove_prefix(colon + 1);
    return {times, nullptr};
}

static bool isDoubtful(std::string_view word) {
    return word.substr(withoutMarks(word).size()).find('?') != std::string_view::npos;
}

// Plays and counts the moves of a line up to its first fault, which it returns; `word` is then the faulty one.
static const char* playLine(BookBuilder& builder, std::string_view text, u64 times, std::string_view& word) {
    newGame();
    i32 ply = 0;
    while (ply < builder.maxPly && !(word = takeWord(text)).empty()) {
        word = withoutMoveNumber(word);
        if (word.empty()) {
            continue;
        }
        const ReadMove read = readMoveText(word);
        if (read.fault != nullptr) {
            return read.fault;
        }
        countMove(builder, read.move, isDoubtful(word) ? 0 : times);
        makeMove(read.move);
        ++ply;
    }
    return nullptr;
}

u64 readOpeningLines(BookBuilder& builder, FaultLog& log, const std::string& fileName,
                     std::string_view text) {
    u64 lines = 0;
    for (u64 number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        line = line.substr(0, line.find('#'));
        const std::size_t start = line.find_first_not_of(blanks);
        if (start == std::string_view::npos || line[start] == '[') {
            continue;
        }
        ++lines;
        std::string_view word = line;
        const LineWeight weight = takeWeight(line);
        const char* fault =
            weight.fault != nullptr ? weight.fault : playLine(builder, line, weight.times, word);
        if (fault != nullptr) {
            reportFault(log, fileName, number, word, fault);
        }
    }
    newGame();
    return lines;
}
