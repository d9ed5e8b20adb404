// Finds the book moves of a position: a binary search over the file on disk, nothing kept between two probes. Assumes
// the file is sorted by key and tolerates any other content.
#include "book/book.h"

#include "book/book_record.h"
#include "frontend/frontend.h"
#include "platform/platform.h"
#include "platform/print.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

struct BookMoves {
    i32 count;
    std::array<BookRecord, bookMovesMax> records;  // in the file's order
};

enum class Lookup : u8 { found, noKey, tooMany, cannotOpen };

// An interface may read both streams from one pipe and would take the text for an answer: there it is a comment.
static void reportOpenError(const char* fileName, i32 error) {
    const bool asComment = errorSharesOutput() && !outputIsTerminal();
    const std::string text =
        std::string(asComment ? "#DEBUG " : "") + fileName + ": " + std::strerror(error) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

// The record at the place where the file stands; false, and a zero record, if it cannot be read whole.
static bool readRecord(std::FILE* file, BookRecord& record) {
    BookRecordBytes bytes{};
    const bool whole = std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    record = whole ? decodeBookRecord(bytes) : BookRecord{};
    return whole;
}

static bool readRecordAt(std::FILE* file, i64 offset, BookRecord& record) {
    return seekFile(file, offset) && readRecord(file, record);
}

// The first record whose key is not below `key`, and its number; without any, the last record. Deliberate: "last" is
// the file's last 16 bytes, out of step with the others if the length is no multiple of 16. False if the file is
// shorter than a record or cannot be read.
static bool findFirst(std::FILE* file, u64 key, BookRecord& best, i64& number) {
    const i64 lastOffset = fileSize(file) - bookRecordSize;
    if (lastOffset < 0 || !readRecordAt(file, lastOffset, best)) {
        return false;
    }
    i64 low = -1;
    i64 high = lastOffset / bookRecordSize;
    while (high - low != 1) {
        const i64 mid = (low + high) / 2;
        BookRecord record{};
        if (!readRecordAt(file, mid * bookRecordSize, record)) {
            return false;  // the last record was read: the disk fails, or the file was cut meanwhile
        }
        if (key <= record.key) {
            best = record;
            high = mid;
        } else {
            low = mid;
        }
    }
    number = high;
    return true;
}

static Lookup collectMoves(std::FILE* file, u64 key, BookMoves& moves) {
    BookRecord record{};
    i64 number = 0;
    moves.count = 0;
    if (!findFirst(file, key, record, number) || record.key != key) {
        return Lookup::noKey;
    }
    moves.records[0] = record;
    moves.count = 1;
    if (!seekFile(file, (number + 1) * bookRecordSize)) {
        return Lookup::found;
    }
    while (readRecord(file, record) && record.key == key) {
        if (moves.count == bookMovesMax) {
            return Lookup::tooMany;
        }
        moves.records[static_cast<u32>(moves.count++)] = record;
    }
    return Lookup::found;
}

static Lookup lookUp(const char* fileName, u64 key, BookMoves& moves) {
    std::FILE* file = openRegularFile(fileName);
    if (file == nullptr) {
        reportOpenError(fileName, errno);
        return Lookup::cannotOpen;
    }
    const Lookup result = collectMoves(file, key, moves);
    std::fclose(file);
    return result;
}

// Deliberate: every move is as likely as any other, and two picks within a second are the same.
static i32 randomIndex(i32 count) {
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    return std::rand() % count;
}

i32 bookProbe(const char* fileName, char (&text)[6]) {
    BookMoves moves;
    const Lookup result = lookUp(fileName, polyglotKey(), moves);
    if (result == Lookup::tooMany) {
        print("#DEBUG: Too many moves in this position (max=%d)\n", bookMovesMax);
    }
    if (result != Lookup::found) {
        return 1;
    }
    const i32 pick = EngineOptions.randBook != 0 ? randomIndex(moves.count) : 0;
    bookMoveText(text, moves.records[static_cast<u32>(pick)].move);
    if (EngineOptions.postThinking == 1 && EngineOptions.xboardMode == 1) {
        print("0 0 0 0 ");
        print("%s (move from book)\n", text);
    }
    return 0;
}

static u32 sumOfWeights(const BookMoves& moves) {
    u32 sum = 0;
    for (i32 i = 0; i < moves.count; ++i) {
        sum += moves.records[static_cast<u32>(i)].weight;
    }
    return sum;
}

// Percent; 0 where no move has a weight.
static double shareOf(const BookRecord& record, u32 sum) {
    return sum == 0 ? 0.0 : static_cast<double>(record.weight) / static_cast<double>(sum) * 100.0;
}

i32 bookList(const char* fileName) {
    const u64 key = polyglotKey();
    BookMoves moves;
    const Lookup result = lookUp(fileName, key, moves);
    if (result == Lookup::noKey) {
        print("%016" PRIx64 ": No such key\n", key);
    } else if (result == Lookup::tooMany) {
        print("Too many moves in this position (max=%d)\n", bookMovesMax);
    }
    if (result != Lookup::found) {
        return 1;
    }
    const u32 sum = sumOfWeights(moves);
    for (i32 i = 0; i < moves.count; ++i) {
        const BookRecord& record = moves.records[static_cast<u32>(i)];
        char text[6];
        bookMoveText(text, record.move);
        print("move=%s weight=%5.2f%%\n", text, shareOf(record, sum));
    }
    return 0;
}
