// The Windows side of environment.h, and the texts of wide_windows.h.
#include "platform/environment.h"

#include "platform/wide_windows.h"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <shellapi.h>

std::wstring wideOf(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string narrowOf(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string narrow(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr,
                                                                    0, nullptr, nullptr)),
                       '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), static_cast<int>(narrow.size()),
                        nullptr, nullptr);
    return narrow;
}

// The system tells the room that a text needs, with its NUL, where the room is too small.
bool readEnvironment(const char* name, std::string& text) {
    const std::wstring wideName = wideOf(name);
    std::wstring value(1, L'\0');
    SetLastError(ERROR_SUCCESS);
    DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    const bool found = length > 0 || GetLastError() != ERROR_ENVVAR_NOT_FOUND;
    while (length >= value.size()) {
        value.resize(length + 1);
        length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    }
    text = narrowOf(std::wstring_view(value).substr(0, length));
    return found;
}

// Not those that `main` gets: they have lost what the system's old code page does not know.
std::vector<std::string> programArguments(i32, char**) {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(narrowOf(words[i]));
    }
    LocalFree(words);
    return arguments;
}

std::string programFolder() {
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) {
        path.resize(2 * path.size());
        length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    }
    path.resize(length);
    const std::size_t end = path.find_last_of(L"\\/");
    return narrowOf(std::wstring_view(path).substr(0, end == std::wstring::npos ? 0 : end));
}
