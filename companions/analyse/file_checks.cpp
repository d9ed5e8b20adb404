// Only regular files are compared: devices and pipes may well be input and output.
#include "file_checks.h"

#include "line_source.h"

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace {

struct Known {
    std::string name;
    struct stat status;
};

}  // namespace

static std::string faultOf(const std::string& file, int error) {
    return shownName(file) + ": " + std::strerror(error);
}

static std::string checkInput(const std::string& file, Known& known) {
    known.name = file;
    const bool found =
        file == "-" ? fstat(STDIN_FILENO, &known.status) == 0 : stat(file.c_str(), &known.status) == 0;
    if (!found) {
        return faultOf(file, errno);
    }
    if (S_ISDIR(known.status.st_mode)) {
        return faultOf(file, EISDIR);
    }
    return file != "-" && access(file.c_str(), R_OK) != 0 ? faultOf(file, errno) : "";
}

static std::string folderOf(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? "." : file.substr(0, slash + 1);
}

// It need not be there yet; its status is all zeros then.
static std::string checkPage(const std::string& file, Known& known) {
    known = {file, {}};
    if (stat(file.c_str(), &known.status) != 0) {
        known.status = {};
        return access(folderOf(file).c_str(), W_OK | X_OK) != 0 ? faultOf(file, errno) : "";
    }
    if (S_ISDIR(known.status.st_mode)) {
        return faultOf(file, EISDIR);
    }
    return access(file.c_str(), W_OK) != 0 ? faultOf(file, errno) : "";
}

static bool isSame(const struct stat& a, const struct stat& b) {
    return S_ISREG(a.st_mode) && S_ISREG(b.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

static std::string checkInputs(const Options& options, const struct stat& output, const Known& page) {
    std::vector<std::string> inputs = options.files;
    if (!options.resumeFile.empty()) {
        inputs.push_back(options.resumeFile);
    }
    for (const std::string& file : inputs) {
        Known input;
        std::string fault = checkInput(file, input);
        if (!fault.empty()) {
            return fault;
        }
        if (isSame(input.status, output)) {
            return shownName(file) + ": it is the output as well";
        }
        if (isSame(input.status, page.status)) {
            return page.name + ": it is an input as well";
        }
    }
    return {};
}

std::string checkFiles(const Options& options) {
    struct stat output {};
    if (fstat(STDOUT_FILENO, &output) != 0) {
        return "standard output: " + std::string(std::strerror(errno));
    }
    Known page{};
    if (!options.htmlFile.empty()) {
        std::string fault = checkPage(options.htmlFile, page);
        if (!fault.empty()) {
            return fault;
        }
        if (isSame(page.status, output)) {
            return page.name + ": it is the output as well";
        }
    }
    return checkInputs(options, output, page);
}
