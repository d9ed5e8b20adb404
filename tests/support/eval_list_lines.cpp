// The list of the evaluation.
#include "eval/eval.h"
#include "eval/psq.h"
#include "frontend/frontend.h"
#include "support/list_lines.h"

#include <cstdio>

std::string staticValues() {
    EngineOptions.kingDanger = 0;
    const i32 value = evaluate();
    char text[120];
    std::snprintf(text, sizeof text, "evaluate %d kingDanger %d easyVal %d sufficientMaterial %d", value,
                  i32{EngineOptions.kingDanger}, i32{easyVal()}, i32{sufficientMaterial()});
    return text;
}
