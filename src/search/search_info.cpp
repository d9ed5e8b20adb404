// The records of the search that others read.
#include "search/search_info.h"

constinit SearchInfoRecord SearchInfo{};
constinit PvLine gs_lineH{};
