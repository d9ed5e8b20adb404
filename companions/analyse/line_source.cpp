// Files are read by descriptors: each call reads at most once, and only where poll says that something is there.
#include "line_source.h"

#include "worker_pool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

std::string shownName(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

static int openInput(const std::string& file) {
    return file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
}

static void closeInput(int descriptor) {
    if (descriptor > STDIN_FILENO) {
        close(descriptor);
    }
}

// ---- by lines -------------------------------------------------------------------------------------------------

static bool openNext(LineSource& source) {
    source.descriptor = openInput(source.files[source.index]);
    source.fileEnded = false;
    source.numberInFile = 0;
    if (source.descriptor < 0) {
        source.fault = source.files[source.index] + ": " + std::strerror(errno);
    }
    return source.descriptor >= 0;
}

static void closeFile(LineSource& source) {
    closeInput(source.descriptor);
    source.descriptor = -1;
    ++source.index;
}

// The next line of the bytes read, the last of a file also without an end.
static bool takeLine(LineSource& source, std::string& text) {
    const std::size_t end = source.bytes.find('\n', std::max(source.used, source.searched));
    source.searched = source.bytes.size();
    if (end == std::string::npos && (!source.fileEnded || source.used == source.bytes.size())) {
        return false;
    }
    text = source.bytes.substr(source.used, end - source.used);
    source.used = end == std::string::npos ? source.bytes.size() : end + 1;
    source.searched = source.used;
    if (text.ends_with('\r')) {
        text.pop_back();
    }
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (source.numberInFile == 0 && text.starts_with(byteOrderMark)) {
        text.erase(0, byteOrderMark.size());
    }
    return true;
}

// Reads what is there. False if nothing is yet.
static bool readMore(LineSource& source) {
    pollfd wait{source.descriptor, POLLIN, 0};
    if (poll(&wait, 1, 0) <= 0) {
        return false;
    }
    char buffer[1 << 16];
    const ssize_t count = read(source.descriptor, buffer, sizeof buffer);
    if (count < 0) {
        if (errno != EINTR && errno != EAGAIN) {
            source.fault = shownName(source.files[source.index]) + ": " + std::strerror(errno);
        }
        return false;
    }
    source.bytes.erase(0, source.used);
    source.searched -= source.used;
    source.used = 0;
    source.bytes.append(buffer, static_cast<std::size_t>(count));
    source.fileEnded = count == 0;
    return true;
}

LineState nextLine(LineSource& source, InputLine& line) {
    while (source.fault.empty() && source.numberOfAll < source.range.last) {
        if (source.descriptor < 0 && (source.index == source.files.size() || !openNext(source))) {
            return LineState::end;
        }
        if (takeLine(source, line.text)) {
            line.file = shownName(source.files[source.index]);
            line.number = ++source.numberInFile;
            if (++source.numberOfAll >= source.range.first) {
                return LineState::given;
            }
        } else if (source.fileEnded) {
            closeFile(source);
        } else if (!readMore(source)) {
            return source.fault.empty() ? LineState::notYet : LineState::end;
        }
    }
    return LineState::end;
}

int descriptorOf(const LineSource& source) {
    return source.descriptor;
}

// ---- whole files ----------------------------------------------------------------------------------------------

std::string readWhole(const std::string& file, std::string& text) {
    const int descriptor = openInput(file);
    if (descriptor < 0) {
        return file + ": " + std::strerror(errno);
    }
    std::string fault;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count == 0 || (count < 0 && caughtSignal() != 0)) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            fault = shownName(file) + ": " + std::strerror(errno);
            break;
        }
        text.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    closeInput(descriptor);
    return fault;
}

static bool isRegular(const std::string& file) {
    struct stat status {};
    return file != "-" && stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

u64 countLines(const std::vector<std::string>& files, const LineRange& range) {
    u64 count = 0;
    for (const std::string& file : files) {
        if (!isRegular(file)) {
            return 0;
        }
        std::ifstream input(file, std::ios::binary);
        for (std::string line; count < range.last && std::getline(input, line);) {
            ++count;
        }
    }
    return count < range.first ? 0 : count - range.first + 1;
}
