#pragma once

// Two sides of a comparison measured in turn on a shared, noisy machine: each pair runs both
// sides back to back (the order swaps every pair, so neither always runs on a warmer cache), and
// the report gives the median and the spread (min-max) of each side and of the per-pair ratio.

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Spread {
    double median = 0;
    double min = 0;
    double max = 0;
};

inline Spread SpreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    Spread spread;
    if (values.empty())
        return spread;
    const std::size_t n = values.size();
    spread.median = n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
    spread.min = values.front();
    spread.max = values.back();
    return spread;
}

struct PairResult {
    Spread first;   // seconds
    Spread second;  // seconds
    Spread ratio;   // first / second, per pair
};

// Runs `pairs` pairs of `first` and `second` (each returns its seconds).
inline PairResult RunPairs(int pairs, const std::function<double()>& first, const std::function<double()>& second)
{
    std::vector<double> a, b, ratios;
    for (int pair = 0; pair < pairs; ++pair) {
        double x, y;
        if (pair % 2 == 0) {
            x = first();
            y = second();
        } else {
            y = second();
            x = first();
        }
        a.push_back(x);
        b.push_back(y);
        ratios.push_back(x / y);
    }
    return {SpreadOf(a), SpreadOf(b), SpreadOf(ratios)};
}

inline std::string Format(const Spread& spread, double scale, const char* unit, int decimals)
{
    char text[96];
    std::snprintf(text, sizeof text, "%.*f %s (%.*f-%.*f)", decimals, spread.median * scale, unit, decimals,
                  spread.min * scale, decimals, spread.max * scale);
    return text;
}

// "<label>: <first> vs <second>: ratio <median> (<min>-<max>) over <pairs> pairs", times in ms.
inline void PrintPairs(const char* label, const char* firstName, const char* secondName, const PairResult& result,
                       int pairs)
{
    std::printf("%s\n  %-24s %s\n  %-24s %s\n  ratio %s / %s: %.2f (%.2f-%.2f), median (min-max) of %d pairs\n", label,
                firstName, Format(result.first, 1e3, "ms", 1).c_str(), secondName,
                Format(result.second, 1e3, "ms", 1).c_str(), firstName, secondName, result.ratio.median,
                result.ratio.min, result.ratio.max, pairs);
}

}  // namespace bench
