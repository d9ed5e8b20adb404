// Texts that the book program reads: games if the first byte is odd, else opening lines.
#include "book_check.h"
#include "fuzz_support.h"
#include "line_reader.h"
#include "pgn_reader.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const bool games = takeByte(input) % 2 == 1;
    BookBuilder builder{40, {}};
    FaultLog log{1000};  // faults are counted, not said
    if (games) {
        readPgnGames(builder, log, "input", input);
    } else {
        readOpeningLines(builder, log, "input", input);
    }
    const BookReport report = checkBook({recordsOf(builder, 1), 0});
    if (report.illegal > 0 || report.unsorted > 0 || report.badPromotions > 0) {
        std::abort();  // only legal moves are counted
    }
    return 0;
}
