// The lists of the board: generators, exchanges, moves that users type.
#include "frontend/frontend.h"
#include "search/ordering.h"
#include "search/search_info.h"
#include "support/list_lines.h"
#include "support/record_text.h"

#include <cstdarg>
#include <cstdio>

static std::string format(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    char text[400];
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

static std::string entry(Mossa m) {
    return format("  %d %d %d %d %s", moveKind(m), moveFrom(m), moveTo(m), movePromo(m), moveText(m).c_str());
}

static void show(Lines& lines, const char* name, const MoveList& list) {
    lines.push_back(format("%s %d", name, list.count));
    for (i32 i = 0; i < list.count; ++i) {
        lines.push_back(entry(list.entries[i].move) + format(" %d", list.entries[i].score));
    }
}

static void show(Lines& lines, const char* name, const QuietList& list) {
    lines.push_back(format("%s %d", name, list.count));
    for (i32 i = 0; i < list.count; ++i) {
        lines.push_back(entry(list.entries[i]));
    }
}

Lines generatedMoves() {
    Lines lines;
    lines.push_back(format("incheck %016llx", static_cast<unsigned long long>(inCheck())));
    lines.push_back(format("leftincheck %016llx", static_cast<unsigned long long>(leftInCheck())));
    MoveList captures;
    QuietList quiets;
    genCaptures(captures);
    show(lines, "genCaptures", captures);
    genCapturesNoEp(captures);
    show(lines, "genCapturesNoEp", captures);
    genQuiets(quiets);
    show(lines, "genQuiets", quiets);
    genPieceQuiets(quiets);
    show(lines, "genPieceQuiets", quiets);
    genPawnQuiets(captures);
    show(lines, "genPawnQuiets", captures);
    genChecks(quiets);
    show(lines, "genChecks", quiets);
    if (inCheck() != 0) {
        genEvasions(inCheck(), captures, quiets);
        show(lines, "genEvasions captures", captures);
        show(lines, "genEvasions quiets", quiets);
    }
    captures.count = 0;
    legalCaptures(captures);
    show(lines, "legalCaptures", captures);
    RootList root;
    i32 count = 0;
    rootMoves(root, count);
    lines.push_back(format("rootMoves %d", count));
    for (i32 i = 0; i < count; ++i) {
        lines.push_back(entry(root[i].move));
    }
    return lines;
}

static std::string exchange(Mossa m) {
    SearchInfo.nodes = 0;
    const i32 value = see(m);
    const u32 nodes = SearchInfo.nodes;
    SearchInfo.nodes = 0;
    const i32 losing = seeIsLosing(m);
    return entry(m) + format(" see %d (%u) losing %d (%u)", value, nodes, losing, SearchInfo.nodes);
}

Lines exchangeValues() {
    Lines lines;
    MoveList captures;
    genCaptures(captures);
    lines.push_back(format("captures %d", captures.count));
    for (i32 i = 0; i < captures.count; ++i) {
        lines.push_back(exchange(captures.entries[i].move));
    }
    QuietList checks;
    genChecks(checks);
    lines.push_back(format("checks %d", checks.count));
    for (i32 i = 0; i < checks.count; ++i) {
        lines.push_back(exchange(checks.entries[i]));
    }
    return lines;
}

std::string answerToUserMove(const char* text) {
    EngineOptions.lastUserMove = 0;
    const i32 answer = parseUserMove(text);
    return format("%d last=%u ", answer, EngineOptions.lastUserMove) + recordFields();
}
