// EPD: four fields of FEN, then operations that end with semicolons. Operands are kept as they came.
#include "epd.h"

#include "fen_reader.h"
#include "words.h"

#include <algorithm>

constexpr i32 mateEvaluation = 32767;  // less the plies to the mate

constexpr std::string_view ownCodes[] = {"acd", "acn", "acs", "ce", "dm", "pm", "pv", "c9"};

// ---- reading --------------------------------------------------------------------------------------------------

static bool isNumberWord(std::string_view word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
}

static std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Up to the semicolon outside quotation marks, which goes too. `quoted` tells whether a quotation has no end.
static std::string_view takeOperation(std::string_view& text, bool& quoted) {
    quoted = false;
    std::size_t end = 0;
    while (end < text.size() && (quoted || text[end] != ';')) {
        quoted = quoted != (text[end] == '"');
        ++end;
    }
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return trimmed(taken);
}

static std::string readOperations(std::string_view text, std::vector<Operation>& operations) {
    text = trimmed(text);
    while (!text.empty()) {
        bool isOpen = false;
        const std::string_view operation = takeOperation(text, isOpen);
        if (isOpen) {
            return "a quotation has no end";
        }
        text = trimmed(text);
        if (operation.empty()) {
            continue;
        }
        Words words{operation};
        const std::string code(words.next());
        if (code.size() > 15 || (code[0] < 'A' || code[0] > 'z')) {
            return "an operation has no name";
        }
        operations.push_back({code, std::string(words.remainder())});
    }
    return {};
}

// Takes all operations of a code out of the list; operands of the first, or an empty text.
static std::string takeOut(std::vector<Operation>& operations, std::string_view code) {
    const auto isMeant = [&](const Operation& operation) { return operation.code == code; };
    const auto found = std::ranges::find_if(operations, isMeant);
    std::string operands = found == operations.end() ? "" : found->operands;
    std::erase_if(operations, isMeant);
    return operands;
}

static void keepClocks(EpdLine& line) {
    Words words{line.fen};
    for (i32 i = 0; i < 4; ++i) {
        words.next();
    }
    const std::string clock(words.next());
    const std::string number(words.next());
    if (clock != "0") {
        line.operations.push_back({"hmvc", clock});
    }
    if (number != "1") {
        line.operations.push_back({"fmvn", number});
    }
}

EpdLine readEpd(std::string_view text) {
    Words words{trimmed(text)};
    std::string fields;
    for (i32 i = 0; i < 4; ++i) {
        fields += std::string(words.next()) + " ";
    }
    Words behind = words;
    std::string clock(behind.next());
    std::string number(behind.next());
    if (isNumberWord(clock) && isNumberWord(number)) {
        words = behind;
    } else {
        clock.clear();
        number.clear();
    }
    EpdLine line;
    line.fault = readOperations(words.rest, line.operations);
    const std::string halfMoves = takeOut(line.operations, "hmvc");
    const std::string fullMoves = takeOut(line.operations, "fmvn");
    clock = halfMoves.empty() ? clock : halfMoves;
    number = fullMoves.empty() ? number : fullMoves;
    const FenReading reading =
        readFen(fields + (clock.empty() ? "0" : clock) + " " + (number.empty() ? "1" : number));
    line.fault = reading.fault.empty() ? line.fault : reading.fault;
    line.fen = reading.fen;
    if (line.fault.empty()) {
        keepClocks(line);
    }
    return line;
}

bool isCommentLine(std::string_view text) {
    const std::string_view bare = trimmed(text);
    return bare.empty() || bare.front() == '#';
}

std::vector<std::string> operandsOf(const EpdLine& line, std::string_view code) {
    const auto found =
        std::ranges::find_if(line.operations, [&](const Operation& known) { return known.code == code; });
    std::vector<std::string> operands;
    if (found == line.operations.end()) {
        return operands;
    }
    std::string_view rest = trimmed(found->operands);
    while (!rest.empty()) {
        const bool quoted = rest.front() == '"';
        rest.remove_prefix(quoted ? 1 : 0);
        const std::size_t end = std::min(rest.find_first_of(quoted ? "\"" : " \t"), rest.size());
        operands.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        rest = trimmed(rest);
    }
    return operands;
}

// ---- writing --------------------------------------------------------------------------------------------------

bool isOwnOperation(std::string_view code) {
    return std::ranges::find(ownCodes, code) != std::end(ownCodes);
}

static std::string write(const EpdLine& line, std::vector<Operation> operations) {
    Words words{line.fen};
    std::string text;
    for (i32 i = 0; i < 4; ++i) {
        text += (i > 0 ? " " : "") + std::string(words.next());
    }
    std::ranges::stable_sort(operations, {}, &Operation::code);
    for (const Operation& operation : operations) {
        text += " " + operation.code + (operation.operands.empty() ? "" : " " + operation.operands) + ";";
    }
    return text;
}

static std::vector<Operation> givenOperations(const EpdLine& line) {
    std::vector<Operation> operations;
    std::ranges::copy_if(line.operations, std::back_inserter(operations),
                         [](const Operation& operation) { return !isOwnOperation(operation.code); });
    return operations;
}

std::string plainEpd(const EpdLine& line) {
    return write(line, givenOperations(line));
}

// A mate that the side to move gives has an operation of its own; one that it gets is told by the evaluation.
static Operation scoreOperation(const Analysis& analysis) {
    const i32 mate = mateDistance(analysis.score);
    if (mate > 0) {
        return {"dm", std::to_string(mate)};
    }
    const bool isMated = mate < 0 || analysis.standstill == Standstill::checkmate;
    return {"ce", std::to_string(isMated ? -(mateEvaluation + 2 * mate) : analysis.score)};
}

static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

static std::string secondsOf(i32 milliseconds) {
    return std::to_string((milliseconds + 500) / 1000);  // EPD counts whole ones
}

std::string analysedEpd(const EpdLine& line, const Analysis& analysis, bool withTime,
                        const std::vector<Operation>& more) {
    std::vector<Operation> operations = givenOperations(line);
    operations.push_back({"acd", std::to_string(analysis.depth)});
    operations.push_back({"acn", std::to_string(analysis.nodes)});
    operations.push_back(scoreOperation(analysis));
    if (withTime) {
        operations.push_back({"acs", secondsOf(analysis.milliseconds)});
    }
    if (!analysis.line.empty()) {
        operations.push_back({"pm", analysis.line.front()});
        operations.push_back({"pv", joined(analysis.line)});
    }
    operations.insert(operations.end(), more.begin(), more.end());
    return write(line, operations);
}
