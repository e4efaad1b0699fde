#pragma once
// The command line of the simulator.

#include "Misbehaviour.h"
#include "Seeds.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct Options {
    int port = 8787;
    Seed seed = Seed::demo;
    std::optional<std::string> portFile;
    std::optional<double> exitAfter;
    Misbehaviour misbehaviour;
    bool help = false;

    // Either the options or a sentence saying what was wrong with the arguments.
    struct Parsed;
    static Parsed parse(const std::vector<std::string>& arguments);
    static std::string usage();
};

struct Options::Parsed {
    Options options;
    std::string error;
};

} // namespace orvan::sim
