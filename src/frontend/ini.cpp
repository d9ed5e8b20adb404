// The INI reader: finds one value in a file, cleans it of comment and quotes, and turns it into text, number or truth.
// Every look-up opens, scans and closes the file.
#include "frontend/ini.h"

#include "platform/platform.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

constexpr i32 iniLineSize = 512;    // with the NUL
constexpr i32 numberTextSize = 64;  // with the NUL
constexpr i32 truthTextSize = 2;    // with the NUL: deliberate, the first character decides

static bool isBlank(char c) {
    return static_cast<i8>(c) <= 32;
}

static bool startsComment(char c) {
    return c == ';' || c == '#';
}

static std::string_view withoutLeadingBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

static std::string_view withoutTrailingBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

static char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

static bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [](char x, char y) { return upperCase(x) == upperCase(y); });
}

// A null text is an empty one.
static std::string_view textOrEmpty(const char* text) {
    return text == nullptr ? std::string_view{} : std::string_view{text};
}

// The next line, or the next piece of a long one, up to a NUL byte in it. False at the end of the file.
static bool nextLine(std::FILE* file, char (&buffer)[iniLineSize], std::string_view& line) {
    buffer[0] = '\0';
    if (std::fgets(buffer, iniLineSize, file) == nullptr) {
        return false;
    }
    line = withoutLeadingBlanks(buffer);
    return true;
}

static bool isSectionLine(std::string_view line) {
    return line.starts_with('[');
}

// Whether `line` is "[name]". Blanks inside the brackets count, whatever follows them does not.
static bool opensSection(std::string_view line, std::string_view name) {
    const std::size_t end = line.find(']');
    return isSectionLine(line) && end != std::string_view::npos &&
           equalsIgnoringCase(line.substr(1, end - 1), name);
}

// Where the key of `line` ends: at the first "=", and only without any at the first ":".
static std::size_t delimiterOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    return equals != std::string_view::npos ? equals : line.find(':');
}

// Whether `text` has at `at` one of the two ways to write a quote mark that is part of the text.
static bool isQuotePair(std::string_view text, std::size_t at) {
    return at + 1 < text.size() && text[at + 1] == '"' && (text[at] == '"' || text[at] == '\\');
}

// `text` up to the first comment sign outside quotes.
static std::string_view withoutComment(std::string_view text) {
    bool insideQuotes = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isQuotePair(text, i)) {
            ++i;
        } else if (text[i] == '"') {
            insideQuotes = !insideQuotes;
        } else if (startsComment(text[i]) && !insideQuotes) {
            return text.substr(0, i);
        }
    }
    return text;
}

// A lone quote mark is not a pair of them: it stays.
static bool isQuoted(std::string_view value) {
    return value.size() >= 2 && value.front() == '"' && value.back() == '"';
}

// Room for `bufferSize` - 1 characters and the NUL. Returns the number of characters.
static i32 copyText(char* buffer, i32 bufferSize, std::string_view text) {
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(bufferSize - 1));
    std::copy_n(text.data(), length, buffer);
    buffer[length] = '\0';
    return static_cast<i32>(length);
}

// The same, with each pair that stands for a quote mark written as one.
static void copyQuotedText(char* buffer, i32 bufferSize, std::string_view text) {
    i32 length = 0;
    for (std::size_t i = 0; i < text.size() && length < bufferSize - 1; ++i) {
        i += isQuotePair(text, i) ? 1 : 0;
        buffer[length++] = text[i];
    }
    buffer[length] = '\0';
}

static void copyCleanedValue(char* buffer, i32 bufferSize, std::string_view rawValue) {
    const std::string_view value = withoutTrailingBlanks(withoutComment(rawValue));
    if (isQuoted(value)) {
        copyQuotedText(buffer, bufferSize, value.substr(1, value.size() - 2));
    } else {
        copyText(buffer, bufferSize, value);
    }
}

static bool skipToSection(std::FILE* file, std::string_view section) {
    char buffer[iniLineSize];
    std::string_view line;
    do {
        if (!nextLine(file, buffer, line)) {
            return false;
        }
    } while (!opensSection(line, section));
    return true;
}

i32 iniFindValue(std::FILE* openFile, const char* section, const char* key, char* buffer, i32 bufferSize) {
    const std::string_view wantedSection = textOrEmpty(section);
    const std::string_view wantedKey = textOrEmpty(key);
    if (!wantedSection.empty() && !skipToSection(openFile, wantedSection)) {
        return 0;
    }
    char lineBuffer[iniLineSize];
    std::string_view line;
    while (nextLine(openFile, lineBuffer, line) && !isSectionLine(line)) {
        const std::size_t delimiter = delimiterOf(line);
        if (delimiter == std::string_view::npos || startsComment(line.front())) {
            continue;
        }
        if (equalsIgnoringCase(withoutTrailingBlanks(line.substr(0, delimiter)), wantedKey)) {
            copyCleanedValue(buffer, bufferSize, withoutLeadingBlanks(line.substr(delimiter + 1)));
            return 1;
        }
    }
    return 0;
}

i32 iniGetString(const char* section, const char* key, const char* defaultValue, char* buffer, i32 bufferSize,
                 const char* fileName) {
    if (bufferSize < 1 || key == nullptr || buffer == nullptr) {
        return 0;
    }
    i32 found = 0;
    std::FILE* file = fileName == nullptr ? nullptr : openRegularFile(fileName);
    if (file != nullptr) {
        found = iniFindValue(file, section, key, buffer, bufferSize);
        std::fclose(file);
    }
    return found != 0 ? static_cast<i32>(std::strlen(buffer))
                      : copyText(buffer, bufferSize, textOrEmpty(defaultValue));
}

i32 iniGetInt(const char* section, const char* key, i32 defaultValue, const char* fileName) {
    char text[numberTextSize] = "";
    const i32 length = iniGetString(section, key, "", text, numberTextSize, fileName);
    if (length == 0) {
        return defaultValue;
    }
    const bool hexadecimal = length >= 2 && upperCase(text[1]) == 'X';
    const long long value = std::strtoll(text, nullptr, hexadecimal ? 16 : 10);
    return static_cast<i32>(
        std::clamp<long long>(value, std::numeric_limits<i32>::min(), std::numeric_limits<i32>::max()));
}

i32 iniGetBool(const char* section, const char* key, i32 defaultValue, const char* fileName) {
    char text[truthTextSize] = "";
    iniGetString(section, key, "", text, truthTextSize, fileName);
    switch (upperCase(text[0])) {
        case 'Y':
        case 'T':
        case '1':
            return 1;
        case 'N':
        case 'F':
        case '0':
            return 0;
        default:
            return defaultValue;
    }
}
