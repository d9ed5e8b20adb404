// The record of those who look on; it is empty unless a front end fills it.
#include "search/search_watch.h"

constinit SearchWatchRecord SearchWatch{};
