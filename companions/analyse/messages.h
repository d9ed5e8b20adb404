// What goes through the pipes between the program and its workers: one line of JSON each.
#pragma once

#include "analysis.h"

#include <string>
#include <string_view>

[[nodiscard]] std::string messageOf(const Position& position);
[[nodiscard]] std::string messageOf(const Analysis& analysis);

/// The other way. False if the line is no such message.
[[nodiscard]] bool readMessage(std::string_view line, Position& position);
[[nodiscard]] bool readMessage(std::string_view line, Analysis& analysis);
