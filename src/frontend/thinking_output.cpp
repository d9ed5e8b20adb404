// Where a think tells its news before a program has said so: nowhere.
#include "frontend/thinking_output.h"

constinit ThinkingSink thinkingSink{
    .attempt = [](const ThinkingAttempt&) {},
    .onlyMove = [](const PvLine&) {},
    .mateIn = [](i32) {},
    .matedIn = [](i32) {},
    .rootMove = [](u32, i32, i32) {},
    .budget = [](i32, i32, i32) {},
};
