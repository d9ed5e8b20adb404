// The solver of plain_solver.h: first who wins, then how far it is to the next zeroing move, both spread from known
// positions to those before them.
#include "plain_solver.h"

#include <algorithm>
#include <map>

namespace plain {

namespace {

constexpr i32 unknown = -100;
constexpr i32 noSuccessor = -1;

// A move out of a position of the same men; or out of the material, with its value for the one who moves there.
struct Edge {
    i32 to;  // noSuccessor if the material changes
    bool zeroing;
    i32 wdlAfter;  // for the side to move after it, where the material changes
};

struct Node {
    std::vector<Edge> edges;
    std::vector<i32> before;  // positions with a move to this one
    bool mated = false;
    i32 wdl = unknown;
    i32 distance = unknown;
};

i32 indexOf(i32 whiteKing, i32 blackKing, i32 man, bool whiteMoves) {
    return ((whiteKing * 64 + blackKing) * 64 + man) * 2 + (whiteMoves ? 1 : 0);
}

i32 squareOf(const Position& p, char man) {
    const auto found = std::find(p.men.begin(), p.men.end(), man);
    return found == p.men.end() ? noSquare : static_cast<i32>(found - p.men.begin());
}

i32 indexOfPosition(const Position& p, char man) {
    return indexOf(squareOf(p, 'K'), squareOf(p, 'k'), squareOf(p, man), p.whiteMoves);
}

char whiteManOf(const Position& p) {
    for (const char man : {'Q', 'R', 'B', 'N', 'P'}) {
        if (squareOf(p, man) != noSquare) {
            return man;
        }
    }
    return '.';
}

Edge edgeTo(const Successor& successor, char man) {
    const char manAfter = whiteManOf(successor.position);
    if (manAfter == man) {
        return Edge{indexOfPosition(successor.position, man), successor.zeroing, 0};
    }
    const i32 wdl = manAfter == '.'
                        ? 0
                        : solvedThreeMen(manAfter).values[indexOfPosition(successor.position, manAfter)].wdl;
    return Edge{noSuccessor, true, wdl};
}

// The value of a node all of whose edges are known, or for which one wins.
i32 wdlFrom(const std::vector<Node>& nodes, const Node& node) {
    i32 best = -2;
    bool allKnown = true;
    for (const Edge& edge : node.edges) {
        const i32 after = edge.to == noSuccessor ? edge.wdlAfter : nodes[edge.to].wdl;
        if (after == unknown) {
            allKnown = false;
        } else {
            best = std::max(best, -after);
        }
    }
    return best == 2 || allKnown ? best : unknown;
}

i32 distanceFrom(const std::vector<Node>& nodes, const Node& node) {
    i32 shortest = 1000;
    i32 longest = 1;
    bool allKnown = true;
    for (const Edge& edge : node.edges) {
        const bool inside = edge.to != noSuccessor;
        const Node* after = inside ? &nodes[edge.to] : nullptr;
        const i32 wdlAfter = inside ? after->wdl : edge.wdlAfter;
        const bool ends = edge.zeroing || (inside && after->mated);
        if (wdlAfter == -2 && node.wdl == 2) {
            if (ends) {
                return 1;
            }
            if (after->distance != unknown) {
                shortest = std::min(shortest, 1 + after->distance);
            }
        } else if (node.wdl == -2 && !ends) {
            allKnown = allKnown && after->distance != unknown;
            longest = std::max(longest, 1 + after->distance);
        }
    }
    if (node.wdl == 2) {
        return shortest == 1000 ? unknown : shortest;
    }
    return allKnown ? longest : unknown;
}

std::vector<i32> legalIndices(const ThreeMen& table) {
    std::vector<i32> indices;
    for (i32 i = 0; i < threeMenPositions; ++i) {
        if (table.legal[i]) {
            indices.push_back(i);
        }
    }
    return indices;
}

// Whenever a value becomes known, the positions before it are looked at again. Those known from the start are before
// others too: every legal position is looked at once in any case.
void spreadWdl(std::vector<Node>& nodes, std::vector<i32> open) {
    for (std::size_t next = 0; next < open.size(); ++next) {
        Node& node = nodes[open[next]];
        if (node.wdl != unknown) {
            continue;
        }
        node.wdl = wdlFrom(nodes, node);
        if (node.wdl != unknown) {
            open.insert(open.end(), node.before.begin(), node.before.end());
        }
    }
}

// Distance by distance: at each the positions are looked at before which the last distance has become known.
void spreadDistance(std::vector<Node>& nodes, std::vector<i32> open) {
    for (i32 distance = 1; !open.empty(); ++distance) {
        std::vector<i32> found;
        for (const i32 index : open) {
            Node& node = nodes[index];
            if (node.distance == unknown && distanceFrom(nodes, node) == distance) {
                node.distance = distance;
                found.push_back(index);
            }
        }
        open.clear();
        for (const i32 index : found) {
            open.insert(open.end(), nodes[index].before.begin(), nodes[index].before.end());
        }
    }
}

bool squaresDiffer(i32 index) {
    const i32 whiteKing = index / 2 / 64 / 64;
    const i32 blackKing = index / 2 / 64 % 64;
    const i32 man = index / 2 % 64;
    return whiteKing != blackKing && whiteKing != man && blackKing != man;
}

void addNode(std::vector<Node>& nodes, ThreeMen& table, i32 index) {
    const Position p = positionOf(table, index);
    if (!squaresDiffer(index) || !isLegal(p)) {
        return;
    }
    table.legal[index] = true;
    Node& node = nodes[index];
    for (const Successor& successor : legalSuccessors(p)) {
        const Edge edge = edgeTo(successor, table.man);
        node.edges.push_back(edge);
        if (edge.to != noSuccessor) {
            nodes[edge.to].before.push_back(index);
        }
    }
    if (node.edges.empty()) {
        node.mated = inCheck(p, p.whiteMoves);
        node.wdl = node.mated ? -2 : 0;
    }
}

ThreeMen solve(char man) {
    ThreeMen table{man, std::vector<bool>(threeMenPositions), std::vector<Value>(threeMenPositions)};
    std::vector<Node> nodes(threeMenPositions);
    for (i32 i = 0; i < threeMenPositions; ++i) {
        addNode(nodes, table, i);
    }
    spreadWdl(nodes, legalIndices(table));
    for (Node& node : nodes) {
        node.wdl = node.wdl == unknown ? 0 : node.wdl;  // nobody can force anything
        node.distance = node.wdl == 0 ? 0 : unknown;
    }
    spreadDistance(nodes, legalIndices(table));
    for (i32 i = 0; i < threeMenPositions; ++i) {
        table.values[i] = Value{nodes[i].wdl, nodes[i].wdl < 0 ? -nodes[i].distance : nodes[i].distance};
    }
    return table;
}

}  // namespace

const ThreeMen& solvedThreeMen(char man) {
    static std::map<char, ThreeMen> all;
    auto found = all.find(man);
    if (found == all.end()) {
        const ThreeMen table = solve(man);
        found = all.emplace(man, table).first;
    }
    return found->second;
}

Position positionOf(const ThreeMen& table, i32 index) {
    Position p = emptyPosition();
    p.men[index / 2 / 64 / 64] = 'K';
    p.men[index / 2 / 64 % 64] = 'k';
    p.men[index / 2 % 64] = table.man;
    p.whiteMoves = index % 2 != 0;
    return p;
}

}  // namespace plain
