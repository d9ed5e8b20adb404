// bookProbe reads the file at each move and tells of a missing one each time on standard error: asked only if it is there.
#include "book_move.h"

#include "book/book.h"
#include "comments.h"
#include "platform/platform.h"
#include "settings.h"

constexpr i32 lastBookMove = 20;  // highest move number at which the engine opens the book

bool bookIsThere() {
    std::FILE* const file = openRegularFile(settings.bookFile.c_str());
    if (file == nullptr) {
        return false;
    }
    std::fclose(file);
    return true;
}

static std::string probe() {
    const CoreSpeaks comments;
    char text[6] = {};
    return bookProbe(settings.bookFile.c_str(), text) == 0 ? text : "";
}

std::string bookMove(const Standing& standing, i32 moveNumber) {
    if (!settings.ownBook || settings.analyseMode || moveNumber > lastBookMove || !bookIsThere()) {
        return {};
    }
    std::string text = probe();
    if (text.size() == 5 && text.back() == ' ') {
        text.pop_back();
    }
    const LegalMove* const legal = findLegal(standing, text);
    return legal != nullptr ? legal->text : "";
}
