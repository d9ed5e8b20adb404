// A book file: the first byte chooses the position, the rest is the file. Neither the engine's probe and listing nor the
// book program's check may fail on any content.
#include "board/board.h"
#include "book/book.h"
#include "book_check.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "fuzz_support.h"

#include <array>

constexpr std::array<const char*, 4> positions = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1",
    "8/8/8/8/8/8/8/8 w - - 0 1",
};

static void probe(const char* name, i32 random) {
    EngineOptions.randBook = random;
    EngineOptions.postThinking = 1;
    EngineOptions.xboardMode = 1;
    char text[6];
    if (bookProbe(name, text) == 0) {
        parseUserMove(text);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const u8 choice = takeByte(input);
    newGame();
    fenToBoard(positions[choice % positions.size()]);
    const std::string& name = scratchFile(input);
    bookList(name.c_str());
    probe(name.c_str(), choice >> 7);
    LoadedBook book{};
    if (loadBook(name, book)) {
        printReport(checkBook(book));
        static_cast<void>(mergeBooks(book.records, book.records));
    }
    return 0;
}
