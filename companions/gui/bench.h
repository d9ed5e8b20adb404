// The fixed searches whose node total tells whether play has changed.
#pragma once

/// Searches them, one after the other on this thread, and prints each count, the total and the speed in the words that
/// test farms read. False if a count is not what it should be. With no search running; the tables are left in the
/// sizes of these searches.
bool runBench();
