// Times as the xboard protocol writes them.
#pragma once

#include "platform/bits.h"

#include <optional>
#include <string_view>

/// "5" minutes, "5:30" minutes and seconds, in centiseconds; what follows is not looked at. Nothing without digits.
[[nodiscard]] std::optional<i32> baseTimeIn(std::string_view word);

/// Seconds with or without a fraction, in milliseconds. Nothing without digits, or for a negative number.
[[nodiscard]] std::optional<i64> secondsIn(std::string_view word);
