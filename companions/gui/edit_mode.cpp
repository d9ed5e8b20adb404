// Unknown lines of the mode are dropped.
#include "edit_mode.h"

#include <cctype>

void beginEdit(EditMode& edit, const Scacchiera& position) {
    edit = {true, true, blackToMove(position), menOf(position)};
}

static bool isSquareText(std::string_view text) {
    return text.size() == 2 && text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8';
}

static void putMan(EditMode& edit, char letter, std::string_view square) {
    char& man = edit.men[static_cast<u32>(square[0] - 'a' + 8 * (square[1] - '1'))];
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    if (lower == 'x') {
        man = ' ';
    } else if (std::string_view("pnbrqk").find(lower) != std::string_view::npos) {
        man = edit.white ? static_cast<char>(std::toupper(static_cast<unsigned char>(lower))) : lower;
    }
}

bool takeEditLine(EditMode& edit, std::string_view line) {
    if (line == ".") {
        edit.on = false;
    } else if (line == "c") {
        edit.white = !edit.white;
    } else if (line == "#") {
        edit.men.assign(64, ' ');
    } else if (line.size() == 3 && isSquareText(line.substr(1))) {
        putMan(edit, line[0], line.substr(1));
    }
    return edit.on;
}

std::string fenOf(const EditMode& edit) {
    std::string fen;
    for (u32 rank = 8; rank-- > 0;) {
        for (const char man : edit.men.substr(std::size_t{rank} * 8, 8)) {
            fen.push_back(man == ' ' ? '1' : man);
        }
        fen += rank > 0 ? "/" : "";
    }
    return fen + (edit.blackToMove ? " b" : " w") + " KQkq - 0 1";
}
