// The programs that write golden lists, but for what the lists hold.
#include "lists/write_list.h"

#include "platform/print.h"
#include "support/record_text.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

constexpr i32 exitBadInput = 2;

void printLines(const Lines& lines) {
    for (const std::string& line : lines) {
        print("%s\n", line.c_str());
    }
}

Mossa writeThink(const SearchLimits& limits) {
    const ListedSearch search = listedSearch(limits);
    printLines(search.lines);
    print("best %s\n", moveText(search.best).c_str());
    return search.best;
}

static i32 writeList(const GoldenList& list) {
    const std::string head = list.hasPositions ? "fen " : "";
    i32 count = 0;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.starts_with(head)) {
            continue;
        }
        if (list.hasPositions) {
            print("%s\n", line.c_str());
        }
        if (!list.write(line.substr(head.size()))) {
            std::fprintf(stderr, "no position: %s\n", line.c_str());
            return exitBadInput;
        }
        ++count;
    }
    if (count == 0) {
        std::fprintf(stderr, "the input holds no position\n");
        return exitBadInput;
    }
    return 0;
}

i32 runListWriter(std::span<const GoldenList> lists, i32 argc, char** argv) {
    const std::string name = argc == 2 ? argv[1] : "";
    const auto list = std::ranges::find(lists, name, &GoldenList::name);
    if (list == lists.end()) {
        std::fprintf(stderr, "usage: LIST <OLD >NEW, where LIST is one of");
        for (const GoldenList& known : lists) {
            std::fprintf(stderr, " %s", known.name);
        }
        std::fprintf(stderr, "\n");
        return exitBadInput;
    }
    return writeList(*list);
}
