// Text for the system's wide functions, which alone take every path.
#pragma once

#include <string>
#include <string_view>

/// UTF-8 as the system's wide text. Bytes that are no UTF-8 become the character that stands for such.
[[nodiscard]] std::wstring wideOf(std::string_view text);

/// The system's wide text as UTF-8.
[[nodiscard]] std::string narrowOf(std::wstring_view text);
