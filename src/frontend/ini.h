// Reader of INI files. Holds nothing between two calls; a file of any content and size does no harm.
//
// Section and key names compare without case (ASCII). A blank is a byte of at most 32 as a signed byte, so bytes from
// 128 up are blanks. Lines are read in pieces of 511 characters: the rest of a longer line is a line of its own.
#pragma once

#include "platform/bits.h"

#include <cstdio>

/// Looks `key` up in `section` of `openFile`, from where the file stands; the first match wins. An empty `section`
/// means the lines before the first section. The cleaned value goes to `buffer`, cut to `bufferSize` - 1 characters,
/// with a NUL. Returns 1, or 0 if there is no such key; `buffer` is then as it was. `bufferSize` is at least 1.
i32 iniFindValue(std::FILE* openFile, const char* section, const char* key, char* buffer, i32 bufferSize);

/// Puts the value into `buffer`, cut to `bufferSize` - 1 characters, or `defaultValue` if there is no such file or key.
/// Returns the length of the text in `buffer`; 0, and nothing done, if `bufferSize` is below 1 or `key` or `buffer` is
/// null.
i32 iniGetString(const char* section, const char* key, const char* defaultValue, char* buffer, i32 bufferSize,
                 const char* fileName);

/// The value as a number: hexadecimal if its second character is "x" or "X", else decimal, up to the first byte that
/// does not fit (0 if the first does not), held to the limits of 32 bits. `defaultValue` if the value is empty or
/// missing.
[[nodiscard]] i32 iniGetInt(const char* section, const char* key, i32 defaultValue, const char* fileName);

/// 1 if the value begins with "Y", "T" or "1", 0 if with "N", "F" or "0", in either case; else `defaultValue`.
[[nodiscard]] i32 iniGetBool(const char* section, const char* key, i32 defaultValue, const char* fileName);
