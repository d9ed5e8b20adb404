// Input is buffered by the system's stream, so a line of a megabyte costs a few hundred reads.
#include "input.h"

#include "platform/platform.h"

#include <cstdio>

// EOF at the end of input. Another program may have left the stream so that it does not block.
static int readByte() {
    int byte = std::getc(stdin);
    while (byte == EOF && std::ferror(stdin) != 0 && waitedForStream(stdin)) {
        byte = std::getc(stdin);
    }
    return byte;
}

bool readInputLine(std::string& line) {
    line.clear();
    bool any = false;
    for (int byte = readByte(); byte != EOF; byte = readByte()) {
        any = true;
        if (byte == '\n') {
            break;
        }
        // A NUL would end the text for whoever prints it.
        if (line.size() < longestLine) {
            line.push_back(byte == '\0' ? ' ' : static_cast<char>(byte));
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return any;
}
