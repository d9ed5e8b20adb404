// Table names, made apart from the registry's own loops.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

/// Men beside the king, in name order: all ways to choose `count` of them.
inline std::vector<std::string> menBeside(int count) {
    std::vector<std::string> all = {""};
    for (int i = 0; i < count; ++i) {
        std::vector<std::string> longer;
        for (const std::string& men : all) {
            const std::string order = "QRBNP";
            const std::size_t first = men.empty() ? 0 : order.find(men.back());
            for (std::size_t next = first; next < order.size(); ++next) {
                longer.push_back(men + order[next]);
            }
        }
        all = longer;
    }
    return all;
}

/// Whether `a` is named first: more men, then the stronger ones.
inline bool namedFirst(const std::string& a, const std::string& b) {
    const std::string order = "QRBNP";
    const auto rank = [&order](const std::string& men) {
        std::string ranks;
        for (const char man : men) {
            ranks += static_cast<char>(order.find(man));
        }
        return ranks;
    };
    return a.size() != b.size() ? a.size() > b.size() : rank(a) <= rank(b);
}

/// Every material of three to `menMax` men once, kings included.
inline std::vector<std::string> tableNames(int menMax) {
    std::vector<std::string> names;
    for (int men = 3; men <= menMax; ++men) {
        for (int first = 0; first <= men - 2; ++first) {
            for (const std::string& a : menBeside(first)) {
                for (const std::string& b : menBeside(men - 2 - first)) {
                    if (namedFirst(a, b)) {
                        names.push_back(std::string("K").append(a).append("vK").append(b));
                    }
                }
            }
        }
    }
    return names;
}
