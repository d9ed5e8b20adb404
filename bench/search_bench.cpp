// Speed of the search: the fixed searches, in nodes a second, and the signature of their behaviour. The argument is the
// number of rounds, 5 without one. Status 1 if a node count is not what it should be.
#include "platform/platform.h"
#include "search_set.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <vector>

constexpr std::size_t searchCount = std::size(fixedSearches);

static double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

static void printRate(const char* name, u64 nodes, const std::vector<double>& seconds) {
    const double best = *std::ranges::min_element(seconds);
    const double middle = median(seconds);
    std::printf("%-18s %10llu nodes  median %7.3f s  best %7.3f s  %6.3f million nodes/s\n", name,
                static_cast<unsigned long long>(nodes), middle, best,
                static_cast<double>(nodes) / middle / 1e6);
}

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    setUpFixedSearches();
    std::vector<std::vector<double>> seconds(searchCount);
    std::vector<double> roundSeconds;
    u64 signature = 0;
    bool asExpected = true;
    for (int round = 0; round < rounds; ++round) {
        double sum = 0;
        signature = 0;
        for (std::size_t i = 0; i < searchCount; ++i) {
            const double start = processorSeconds();
            const u64 nodes = runFixedSearch(fixedSearches[i]);
            seconds[i].push_back(processorSeconds() - start);
            sum += seconds[i].back();
            signature += nodes;
            if (nodes != fixedSearches[i].nodes) {
                asExpected = false;
                std::printf("%s: %llu nodes, not %llu\n", fixedSearches[i].name,
                            static_cast<unsigned long long>(nodes),
                            static_cast<unsigned long long>(fixedSearches[i].nodes));
            }
        }
        roundSeconds.push_back(sum);
    }
    for (std::size_t i = 0; i < searchCount; ++i) {
        printRate(fixedSearches[i].name, fixedSearches[i].nodes, seconds[i]);
    }
    printRate("all", signature, roundSeconds);
    std::printf("signature %llu, compiler %s\n", static_cast<unsigned long long>(signature), __VERSION__);
    return asExpected && signature == searchSignature ? 0 : 1;
}
