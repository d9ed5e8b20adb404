// Who looks on while a search runs: nobody in the engine, another front end otherwise. No include but the root list's.
#pragma once

#include "search/root_list.h"

/// Called on the searching thread; null where nobody wants to know. Set while no search runs.
struct SearchWatchRecord {
    /// Whenever the search looks at the clock, about once in 1024 nodes. May set stopSearch.
    void (*clockRead)();
    /// When the root list is made and holds more than one move: may take moves out, but not all.
    void (*rootListMade)(RootList& rootList, i32& rootCount);
};
extern SearchWatchRecord SearchWatch;
