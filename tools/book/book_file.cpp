// Reads, writes and merges book files.
#include "book_file.h"

#include "book_builder.h"
#include "text_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

static_assert(sizeof(BookRecordBytes) == bookRecordSize);

bool loadBook(const std::string& fileName, LoadedBook& book) {
    std::string bytes;
    if (!readFile(fileName, bytes)) {
        return false;
    }
    const std::size_t count = bytes.size() / bookRecordSize;
    book.records.resize(count);
    book.spareBytes = bytes.size() % bookRecordSize;
    for (std::size_t i = 0; i < count; ++i) {
        BookRecordBytes record;
        std::memcpy(record.data(), bytes.data() + i * bookRecordSize, record.size());
        book.records[i] = decodeBookRecord(record);
    }
    return true;
}

bool saveBook(const std::string& fileName, const BookRecords& records) {
    std::string bytes;
    bytes.reserve(records.size() * bookRecordSize);
    for (const BookRecord& record : records) {
        const BookRecordBytes encoded = encodeBookRecord(record);
        bytes.append(encoded.begin(), encoded.end());
    }
    return writeFile(fileName, bytes);
}

BookRecords mergeBooks(const BookRecords& a, const BookRecords& b) {
    BookBuilder builder{};
    for (const BookRecords* records : {&a, &b}) {
        for (const BookRecord& record : *records) {
            builder.countOfMove[{record.key, record.move}] += record.weight;
        }
    }
    return recordsOf(builder, 0);
}
