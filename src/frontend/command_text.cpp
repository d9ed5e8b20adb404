// How lines are matched and numbers read: by a fixed count of bytes at the start of the line, without trimming and
// without case folding.
#include "frontend/internal.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>

bool isWord(const char* line, const char* word) {
    return std::strncmp(line, word, std::strlen(word) + 1) == 0;
}

bool hasPrefix(const char* line, const char* prefix) {
    return std::strncmp(line, prefix, std::strlen(prefix)) == 0;
}

const char* fromByte(const char* line, i32 n) {
    return line + std::min(std::strlen(line), static_cast<std::size_t>(n - 1));
}

static const char* skipBlanks(const char* text) {
    while (std::isspace(static_cast<unsigned char>(*text)) != 0) {
        ++text;
    }
    return text;
}

static bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

static i32 saturated(i64 value) {
    return static_cast<i32>(
        std::clamp(value, i64{std::numeric_limits<i32>::min()}, i64{std::numeric_limits<i32>::max()}));
}

bool scanNumber(const char*& text, i32& number) {
    const char* at = skipBlanks(text);
    const bool negative = *at == '-';
    if (*at == '-' || *at == '+') {
        ++at;
    }
    if (!isDigit(*at)) {
        return false;
    }
    i64 value = 0;
    for (; isDigit(*at); ++at) {
        value = saturated(value * 10 + (negative ? '0' - *at : *at - '0'));
    }
    number = static_cast<i32>(value);
    text = at;
    return true;
}

bool scanNumberBehind(const char* line, const char* word, i32& number) {
    if (!hasPrefix(line, word)) {
        return false;
    }
    const char* text = line + std::strlen(word);
    return scanNumber(text, number);
}

i32 saturatedProduct(i32 a, i32 b) {
    return saturated(i64{a} * b);
}

Next walkRows(std::span<const Row> rows, const char* line) {
    for (const Row& row : rows) {
        if (row.matches(line, row.text)) {
            return row.act(line);
        }
    }
    return Next::notTaken;
}
