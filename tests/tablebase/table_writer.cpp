// The compressor of table_writer.h: a list of symbols, each a value or a pair of symbols; the values cut into symbols,
// the longest that fits first; a prefix code by frequency; blocks filled until no code fits.
#include "table_writer.h"

#include <algorithm>
#include <map>
#include <queue>
#include <stdexcept>

namespace writer {

namespace {

constexpr i32 leaf = -1;
constexpr u64 valuesPerBlockMax = 65536;

struct Symbol {
    i32 left;  // leaf for a value
    i32 right;
    u8 value;  // of a leaf
    std::vector<u8> expansion;
    u64 frequency;
    i32 length;  // of its code, bits
};

void put(std::string& bytes, u64 number, i32 count) {
    for (i32 i = 0; i < count; ++i) {
        bytes += static_cast<char>(number >> (8 * i));
    }
}

void alignTo(std::string& bytes, std::size_t unit) {
    bytes.resize((bytes.size() + unit - 1) / unit * unit, '\0');
}

// ---- symbols --------------------------------------------------------------------------------------------------

i32 addLeaf(std::vector<Symbol>& symbols, u8 value) {
    symbols.push_back({leaf, leaf, value, {value}, 0, 0});
    return static_cast<i32>(symbols.size()) - 1;
}

i32 addPair(std::vector<Symbol>& symbols, i32 left, i32 right) {
    std::vector<u8> expansion = symbols[left].expansion;
    expansion.insert(expansion.end(), symbols[right].expansion.begin(), symbols[right].expansion.end());
    symbols.push_back({left, right, 0, expansion, 0, 0});
    return static_cast<i32>(symbols.size()) - 1;
}

std::vector<Symbol> makeSymbols(const StreamPlan& plan) {
    std::vector<Symbol> symbols;
    std::map<u8, i32> leafOf;
    for (const Run& run : plan.runs) {
        if (leafOf.find(run.value) == leafOf.end()) {
            leafOf[run.value] = addLeaf(symbols, run.value);
        }
    }
    for (const auto& [value, number] : leafOf) {
        i32 last = number;
        for (i32 depth = 0; depth < plan.pairDepth; ++depth) {
            last = addPair(symbols, last, last);
        }
    }
    std::map<std::pair<u8, u8>, i32> neighbours;
    for (std::size_t i = 1; i < plan.runs.size(); ++i) {
        ++neighbours[{plan.runs[i - 1].value, plan.runs[i].value}];
    }
    for (i32 i = 0; i < plan.mixedPairs && !neighbours.empty(); ++i) {
        const auto best = std::max_element(neighbours.begin(), neighbours.end(),
                                           [](const auto& a, const auto& b) { return a.second < b.second; });
        addPair(symbols, leafOf[best->first.first], leafOf[best->first.second]);
        neighbours.erase(best);
    }
    if (symbols.size() == 1) {
        addLeaf(symbols, 0);  // a code of one symbol has no bits
    }
    return symbols;
}

// ---- codes ----------------------------------------------------------------------------------------------------

void setHuffmanLengths(std::vector<Symbol>& symbols) {
    struct Node {
        u64 weight;
        std::vector<i32> below;
    };
    const auto heavier = [](const Node& a, const Node& b) { return a.weight > b.weight; };
    std::priority_queue<Node, std::vector<Node>, decltype(heavier)> open(heavier);
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        open.push({symbols[i].frequency + 1, {static_cast<i32>(i)}});
    }
    while (open.size() > 1) {
        Node joined = open.top();
        open.pop();
        joined.weight += open.top().weight;
        joined.below.insert(joined.below.end(), open.top().below.begin(), open.top().below.end());
        open.pop();
        for (const i32 symbol : joined.below) {
            ++symbols[symbol].length;
        }
        open.push(joined);
    }
}

// All of one length; symbols without use fill the code up.
void setEqualLengths(std::vector<Symbol>& symbols) {
    i32 length = 1;
    while ((std::size_t{1} << length) < symbols.size()) {
        ++length;
    }
    while (symbols.size() < (std::size_t{1} << length)) {
        addLeaf(symbols, 0);
    }
    for (Symbol& symbol : symbols) {
        symbol.length = length;
    }
}

// Puts the longest codes first, as the format wants; among equals leaves go last where the plan asks for it.
// `place` becomes each symbol's new number.
std::vector<Symbol> inCodeOrder(const std::vector<Symbol>& symbols, bool reverseLeaves,
                                std::vector<i32>& place) {
    std::vector<i32> order;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        order.push_back(static_cast<i32>(i));
    }
    std::stable_sort(order.begin(), order.end(), [&](i32 a, i32 b) {
        if (symbols[a].length != symbols[b].length) {
            return symbols[a].length > symbols[b].length;
        }
        return reverseLeaves && symbols[a].expansion.size() > symbols[b].expansion.size();
    });
    place.assign(symbols.size(), 0);
    std::vector<Symbol> sorted;
    for (std::size_t i = 0; i < order.size(); ++i) {
        place[order[i]] = static_cast<i32>(i);
        sorted.push_back(symbols[order[i]]);
    }
    for (Symbol& symbol : sorted) {
        if (symbol.left != leaf) {
            symbol.left = place[symbol.left];
            symbol.right = place[symbol.right];
        }
    }
    return sorted;
}

struct Code {
    u64 bits;
    i32 length;
};

// First code and first symbol of each length; codes of a length rise with the symbol's number.
struct CodeTable {
    i32 minLength;
    i32 maxLength;
    std::vector<u64> first;   // by length
    std::vector<u32> offset;  // by length
};

CodeTable makeCodeTable(const std::vector<Symbol>& sorted) {
    CodeTable table{sorted.back().length, sorted.front().length, {}, {}};
    table.first.assign(table.maxLength + 1, 0);
    table.offset.assign(table.maxLength + 1, 0);
    u64 next = 0;
    u32 symbol = 0;
    for (i32 length = table.maxLength; length >= table.minLength; --length) {
        table.first[length] = next;
        table.offset[length] = symbol;
        while (symbol < sorted.size() && sorted[symbol].length == length) {
            ++symbol;
            ++next;
        }
        next /= 2;
    }
    return table;
}

Code codeOf(const CodeTable& table, const std::vector<Symbol>& sorted, i32 symbol) {
    const i32 length = sorted[symbol].length;
    return Code{table.first[length] + static_cast<u64>(symbol) - table.offset[length], length};
}

// ---- cutting the values ---------------------------------------------------------------------------------------

// Reads runs value by value without unrolling them.
struct Cursor {
    const std::vector<Run>& runs;
    std::size_t run;
    u64 used;  // of the run
};

bool atEnd(const Cursor& cursor) {
    return cursor.run == cursor.runs.size();
}

void advance(Cursor& cursor, u64 count) {
    cursor.used += count;
    while (!atEnd(cursor) && cursor.used >= cursor.runs[cursor.run].count) {
        cursor.used -= cursor.runs[cursor.run].count;
        ++cursor.run;
    }
}

bool isUniform(const Symbol& symbol) {
    return symbol.left == symbol.right;
}

bool startsWith(Cursor cursor, const Symbol& symbol) {
    const std::vector<u8>& values = symbol.expansion;
    const Run& run = cursor.runs[cursor.run];
    if (run.value != values.front()) {
        return false;
    }
    if (run.count - cursor.used >= values.size()) {
        return isUniform(symbol);
    }
    for (const u8 value : values) {
        if (atEnd(cursor) || cursor.runs[cursor.run].value != value) {
            return false;
        }
        advance(cursor, 1);
    }
    return true;
}

// Symbols by length, the longest first.
std::vector<i32> longestFirst(const std::vector<Symbol>& symbols) {
    std::vector<i32> order;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        order.push_back(static_cast<i32>(i));
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](i32 a, i32 b) { return symbols[a].expansion.size() > symbols[b].expansion.size(); });
    return order;
}

std::vector<i32> cut(const StreamPlan& plan, std::vector<Symbol>& symbols) {
    const std::vector<i32> order = longestFirst(symbols);
    std::vector<i32> sequence;
    for (Cursor cursor{plan.runs, 0, 0}; !atEnd(cursor);) {
        const auto found = std::find_if(order.begin(), order.end(),
                                        [&](i32 symbol) { return startsWith(cursor, symbols[symbol]); });
        sequence.push_back(*found);
        ++symbols[*found].frequency;
        advance(cursor, symbols[*found].expansion.size());
    }
    return sequence;
}

// ---- streams --------------------------------------------------------------------------------------------------

struct Stream {
    std::string header;
    std::string indexTable;
    std::string sizeTable;
    std::string data;
};

struct Block {
    u64 firstValue;
    u64 values;
};

struct Blocks {
    std::vector<Block> list;
    std::string data;
};

Blocks fillBlocks(const StreamPlan& plan, const std::vector<Symbol>& sorted, const CodeTable& table,
                  const std::vector<i32>& sequence) {
    const std::size_t blockBytes = std::size_t{1} << plan.blockSize;
    Blocks blocks;
    std::size_t usedBits = 8 * blockBytes;
    u64 position = 0;
    for (const i32 symbol : sequence) {
        const Code code = codeOf(table, sorted, symbol);
        const u64 values = sorted[symbol].expansion.size();
        if (usedBits + static_cast<std::size_t>(code.length) > 8 * blockBytes ||
            blocks.list.back().values + values > valuesPerBlockMax) {
            blocks.list.push_back({position, 0});
            blocks.data.resize(blocks.data.size() + blockBytes, '\0');
            usedBits = 0;
        }
        for (i32 bit = code.length - 1; bit >= 0; --bit, ++usedBits) {
            const std::size_t byte = blocks.data.size() - blockBytes + usedBits / 8;
            const u64 shifted = (code.bits >> bit & 1) << (7 - usedBits % 8);
            blocks.data[byte] = static_cast<char>(static_cast<u8>(blocks.data[byte]) | shifted);
        }
        blocks.list.back().values += values;
        position += values;
    }
    return blocks;
}

// Index points behind the last value lie in imagined full blocks, which get sizes but no data.
std::string indexTableOf(const StreamPlan& plan, const Blocks& blocks, u64 total, std::size_t& extraSizes) {
    const u64 span = u64{1} << plan.indexBits;
    std::string table;
    std::size_t block = 0;
    for (u64 start = 0; start < total; start += span) {
        const u64 point = start + span / 2;
        while (block + 1 < blocks.list.size() && blocks.list[block + 1].firstValue <= point) {
            ++block;
        }
        u64 offset = point - blocks.list[block].firstValue;
        u64 number = block;
        if (point >= total) {
            const u64 behind = point - total;
            number = blocks.list.size() + behind / valuesPerBlockMax;
            offset = behind % valuesPerBlockMax;
            extraSizes = std::max(extraSizes, static_cast<std::size_t>(number + 1 - blocks.list.size()));
        }
        put(table, number, 4);
        put(table, offset, 2);
    }
    return table;
}

std::string headerOf(const StreamPlan& plan, const std::vector<Symbol>& sorted, const CodeTable& table,
                     std::size_t blockCount, std::size_t extraSizes) {
    std::string header;
    put(header, plan.flags, 1);
    put(header, static_cast<u64>(plan.blockSize), 1);
    put(header, static_cast<u64>(plan.indexBits), 1);
    put(header, extraSizes, 1);
    put(header, blockCount, 4);
    put(header, static_cast<u64>(table.maxLength), 1);
    put(header, static_cast<u64>(table.minLength), 1);
    for (i32 length = table.minLength; length <= table.maxLength; ++length) {
        put(header, table.offset[length], 2);
    }
    put(header, sorted.size(), 2);
    for (const Symbol& symbol : sorted) {
        const bool isLeaf = symbol.left == leaf;
        const u64 left = isLeaf ? symbol.value : static_cast<u64>(symbol.left);
        const u64 right = isLeaf ? 0xFFF : static_cast<u64>(symbol.right);
        put(header, left | right << 12, 3);
    }
    if (sorted.size() % 2 != 0) {
        put(header, 0, 1);
    }
    return header;
}

Stream compress(const StreamPlan& plan) {
    Stream stream;
    if (plan.constant) {
        put(stream.header, plan.flags | 128u, 1);
        put(stream.header, plan.runs.front().value, 1);
        return stream;
    }
    std::vector<Symbol> symbols = makeSymbols(plan);
    std::vector<i32> sequence = cut(plan, symbols);
    plan.equalLengths ? setEqualLengths(symbols) : setHuffmanLengths(symbols);
    std::vector<i32> place;
    const std::vector<Symbol> sorted = inCodeOrder(symbols, plan.reverseLeaves, place);
    for (i32& symbol : sequence) {
        symbol = place[symbol];
    }
    const CodeTable table = makeCodeTable(sorted);
    const Blocks blocks = fillBlocks(plan, sorted, table, sequence);
    u64 total = 0;
    for (const Run& run : plan.runs) {
        total += run.count;
    }
    std::size_t extraSizes = 0;
    stream.indexTable = indexTableOf(plan, blocks, total, extraSizes);
    for (const Block& block : blocks.list) {
        put(stream.sizeTable, block.values - 1, 2);
    }
    for (std::size_t i = 0; i < extraSizes; ++i) {
        put(stream.sizeTable, valuesPerBlockMax - 1, 2);
    }
    stream.data = blocks.data;
    stream.header = headerOf(plan, sorted, table, blocks.list.size(), extraSizes);
    return stream;
}

}  // namespace

std::string fileBytes(const FilePlan& plan) {
    std::string bytes;
    put(bytes, plan.magic, 4);
    put(bytes, plan.flags, 1);
    for (const std::string& order : plan.orders) {
        bytes += order;
    }
    alignTo(bytes, 2);
    std::vector<Stream> streams;
    for (const StreamPlan& stream : plan.streams) {
        streams.push_back(compress(stream));
        bytes += streams.back().header;
    }
    for (const std::vector<std::string>& lists : plan.valueMaps) {
        for (const std::string& list : lists) {
            put(bytes, list.size(), 1);
            bytes += list;
        }
    }
    alignTo(bytes, 2);
    for (const Stream& stream : streams) {
        bytes += stream.indexTable;
    }
    for (const Stream& stream : streams) {
        bytes += stream.sizeTable;
    }
    for (const Stream& stream : streams) {
        alignTo(bytes, 64);
        bytes += stream.data;
    }
    return bytes;
}

std::vector<Run> runsOf(const std::vector<u8>& values) {
    std::vector<Run> runs;
    for (const u8 value : values) {
        if (runs.empty() || runs.back().value != value) {
            runs.push_back({value, 0});
        }
        ++runs.back().count;
    }
    return runs;
}

}  // namespace writer
