// The distance tables in use: loaded when first asked for, the one not asked for longest gives way. Belongs to the
// thread that owns `board`, which alone probes distances; there is no lock.
#include "tablebase/internal.h"

#include <algorithm>

constinit std::array<dtzCacheRecord, 64> dtzCache{};

void unloadTableDtz(dtzCacheRecord& record) {
    if (record.entry != nullptr) {
        closeTableDtz(record.entry);
    }
    record = dtzCacheRecord{};
}

void clearDtzCache() {
    for (dtzCacheRecord& record : dtzCache) {
        unloadTableDtz(record);
    }
}

void loadTableDtz(const char* name, u64 key1, u64 key2) {
    const tbEntry* wdlEntry = lookupTable(key1);
    dtzCache[0] = {key1, key2, wdlEntry == nullptr ? nullptr : openTableDtz(wdlEntry->material, name)};
}

// Brings the material's record to the front of dtzCache, loading the table if need be. False if none is registered.
static bool dtzToFront(u64 key) {
    if (dtzCache[0].key1 == key || dtzCache[0].key2 == key) {
        return true;
    }
    // With the colours reversed too, but a table that could not be loaded is then tried again.
    const auto found =
        std::find_if(dtzCache.begin() + 1, dtzCache.end(), [key](const dtzCacheRecord& record) {
            return record.key1 == key || (record.key2 == key && record.entry != nullptr);
        });
    if (found != dtzCache.end()) {
        std::rotate(dtzCache.begin(), found, found + 1);
        return true;
    }
    const tbEntry* entry = lookupTable(key);
    if (entry == nullptr) {
        return false;
    }
    const i32 swapColours = key != entry->material.key ? 1 : 0;
    char name[tableNameSize];
    tableNameOfPosition(name, swapColours);
    unloadTableDtz(dtzCache.back());
    std::rotate(dtzCache.begin(), dtzCache.end() - 1, dtzCache.end());
    loadTableDtz(name, materialKeyOfPosition(swapColours), materialKeyOfPosition(1 - swapColours));
    return true;
}

const dtzEntry* dtzEntryOf(u64 key) {
    return dtzToFront(key) ? dtzCache[0].entry : nullptr;
}
