// One table of words; each names the field that the number behind it goes to.
#include "uci_go.h"

#include "words.h"

#include <algorithm>

namespace {

struct Limit {
    const char* word;
    std::optional<i64> GoLimits::*field;
};

constexpr Limit limitWords[] = {
    {"wtime", &GoLimits::whiteTime}, {"btime", &GoLimits::blackTime}, {"movetime", &GoLimits::moveTime},
    {"depth", &GoLimits::depth},     {"nodes", &GoLimits::nodes},     {"mate", &GoLimits::mate},
};

struct Count {
    const char* word;
    i64 GoLimits::*field;
};

constexpr Count countWords[] = {
    {"winc", &GoLimits::whiteIncrement},
    {"binc", &GoLimits::blackIncrement},
    {"movestogo", &GoLimits::movesToGo},
};

}  // namespace

// The number behind a word is taken off only if it is one.
static std::optional<i64> takeNumber(Words& words) {
    Words ahead = words;
    const std::optional<i64> number = numberIn(ahead.next());
    if (number) {
        words = ahead;
    }
    return number;
}

static void takeMoves(Words& words, const Standing& standing, std::vector<Mossa>& moves) {
    for (Words ahead = words; looksLikeMove(ahead.next()); words = ahead) {
        Words one = words;
        const LegalMove* const legal = findLegal(standing, one.next());
        if (legal != nullptr) {
            moves.push_back(legal->move);
        }
    }
}

static void takeWord(std::string_view word, Words& words, const Standing& standing, GoLimits& limits) {
    if (word == "infinite") {
        limits.infinite = true;
    } else if (word == "ponder") {
        limits.ponder = true;
    } else if (word == "searchmoves") {
        takeMoves(words, standing, limits.only);
    }
    for (const Limit& limit : limitWords) {
        if (word == limit.word) {
            const std::optional<i64> number = takeNumber(words);
            limits.*limit.field = number ? number : limits.*limit.field;
        }
    }
    for (const Count& count : countWords) {
        if (word == count.word) {
            limits.*count.field = takeNumber(words).value_or(limits.*count.field);
        }
    }
}

GoLimits readGo(std::string_view text, const Standing& standing) {
    GoLimits limits;
    Words words{text};
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        takeWord(word, words, standing, limits);
    }
    return limits;
}

bool hasClock(const GoLimits& limits) {
    return limits.whiteTime.has_value() || limits.blackTime.has_value();
}

bool isEndless(const GoLimits& limits) {
    const bool limited = hasClock(limits) || limits.moveTime || limits.depth || limits.nodes || limits.mate;
    return limits.infinite || !limited;
}

bool isForPlay(const GoLimits& limits) {
    const bool looksOnly = limits.infinite || limits.ponder || limits.depth || limits.nodes || limits.mate ||
                           !limits.only.empty();
    return !looksOnly && (hasClock(limits) || limits.moveTime);
}
