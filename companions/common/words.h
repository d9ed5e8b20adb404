// Lines taken apart into words.
#pragma once

#include "platform/bits.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

/// Hands out the words of a text, separated by blanks or tabs.
struct Words {
    std::string_view rest;

    /// The next word, empty at the end.
    std::string_view next() {
        skipBlanks();
        const std::size_t end = rest.find_first_of(" \t");
        const std::string_view word = rest.substr(0, end);
        rest.remove_prefix(word.size());
        return word;
    }

    /// What is left, without blanks around it.
    std::string_view remainder() {
        skipBlanks();
        const std::size_t last = rest.find_last_not_of(" \t");
        return last == std::string_view::npos ? std::string_view{} : rest.substr(0, last + 1);
    }

  private:
    void skipBlanks() {
        const std::size_t first = rest.find_first_not_of(" \t");
        rest.remove_prefix(first == std::string_view::npos ? rest.size() : first);
    }
};

/// A word of a user's for a message: in quotation marks, cut off where it is long, without what would move a terminal's cursor.
[[nodiscard]] inline std::string quotedWord(std::string_view word) {
    constexpr std::size_t longest = 32;
    std::string text(word.substr(0, longest));
    std::ranges::replace_if(
        text, [](char c) { return static_cast<u8>(c) < ' ' || c == '\x7F'; }, '?');
    return "\"" + text + (word.size() > longest ? "..." : "") + "\"";
}

/// A whole number at the start of `word`, whatever follows it, held to the limits of 64 bits; nothing without digits.
[[nodiscard]] inline std::optional<i64> numberIn(std::string_view word) {
    if (!word.empty() && word.front() == '+') {
        word.remove_prefix(1);
    }
    i64 value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error == std::errc::result_out_of_range) {
        return word.front() == '-' ? std::numeric_limits<i64>::min() : std::numeric_limits<i64>::max();
    }
    return error == std::errc{} ? std::optional<i64>(value) : std::nullopt;
}

[[nodiscard]] inline i64 numberOr(std::string_view word, i64 otherwise) {
    return numberIn(word).value_or(otherwise);
}

/// Whether two words are equal but for the case of their letters.
[[nodiscard]] inline bool sameWord(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, [&](char x, char y) { return lower(x) == lower(y); });
}
