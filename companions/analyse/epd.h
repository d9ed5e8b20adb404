// Lines of positions: FEN, or EPD with its operations.
#pragma once

#include "analysis.h"

#include <string>
#include <string_view>
#include <vector>

/// "bm Nf3 d4;" and the like.
struct Operation {
    std::string code;
    std::string operands;  // as they are written, quotation marks included
};

struct EpdLine {
    std::string fault;  // not empty: the line is no position, and nothing else here holds
    std::string fen;    // six fields, as readFen gives them
    std::vector<Operation> operations;
};

/// Reads a line. The clocks of a FEN become operations hmvc and fmvn, which say more than 0 and 1, and these two become
/// clocks.
[[nodiscard]] EpdLine readEpd(std::string_view text);

/// The operations that this program writes itself.
[[nodiscard]] bool isOwnOperation(std::string_view code);

/// The line in one form of writing: four fields, and the operations in the order of their codes, without those that this
/// program writes. Two lines with the same text here are the same work.
[[nodiscard]] std::string plainEpd(const EpdLine& line);

/// The same with what the search has found, and with `more`. `withTime`: with acs.
[[nodiscard]] std::string analysedEpd(const EpdLine& line, const Analysis& analysis, bool withTime,
                                      const std::vector<Operation>& more);

/// Operands of an operation, without quotation marks; empty if there is none of this code.
[[nodiscard]] std::vector<std::string> operandsOf(const EpdLine& line, std::string_view code);

/// Whether `text` is an empty line or a comment.
[[nodiscard]] bool isCommentLine(std::string_view text);
