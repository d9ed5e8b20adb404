// All results are held to what a clock of 32 bits in centiseconds can bear.
#include "time_words.h"

#include "budget.h"
#include "words.h"

#include <algorithm>
#include <charconv>
#include <cmath>

constexpr i64 longestSeconds = 10'000'000;

std::optional<i64> secondsIn(std::string_view word) {
    double seconds = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seconds);
    if (error == std::errc::invalid_argument || !(seconds >= 0)) {
        return std::nullopt;
    }
    const bool tooLong =
        error == std::errc::result_out_of_range || seconds > static_cast<double>(longestSeconds);
    return tooLong ? longestSeconds * 1000 : i64{std::llround(seconds * 1000)};
}

std::optional<i32> baseTimeIn(std::string_view word) {
    const std::optional<i64> minutes = numberIn(word);
    if (!minutes || *minutes < 0) {
        return std::nullopt;
    }
    const std::size_t colon = word.find(':');
    const i64 seconds =
        colon == std::string_view::npos ? 0 : secondsIn(word.substr(colon + 1)).value_or(0) / 10;
    const i64 whole = std::min(*minutes, longestSeconds / 60) * 60 * 100;
    return centisecondsOf((whole + seconds) * 10);
}
