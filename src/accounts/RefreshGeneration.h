#pragma once
// Numbers each pair of reads, so that an answer to an older pair can be told and thrown away.

namespace orvan {

struct RefreshGeneration {
    int current = 0;

    bool operator==(const RefreshGeneration&) const = default;

    int begin() { return ++current; }
    static bool accepts(int generation, int current) { return generation > 0 && generation == current; }
};

} // namespace orvan
