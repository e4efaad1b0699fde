#pragma once
// The launch and quit order shared by both front ends, and the command line they share.

#include "app/Companion.h"
#include "app/FrontEnd.h"

#include <QCoreApplication>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan::app {

bool hasFlag(int argc, char** argv, const char* flag);
std::optional<std::string> valueOf(int argc, char** argv, const char* flag);
// Every value of a flag that may be given more than once.
std::vector<std::string> valuesOf(int argc, char** argv, const char* flag);

// Headless when asked, or when no display can be reached and no platform was chosen by hand.
bool wantsHeadless(int argc, char** argv, const Environment& environment);

// Answers --version and --help; absent when the program should run.
std::optional<int> answerInfo(int argc, char** argv);

// Runs the companion until it quits: one instance per user, the earlier name carried over, the
// front end made, the login entry settled, the supervisor started; every quit stops our bridge.
int run(QCoreApplication& app, int argc, char** argv,
        const std::function<std::unique_ptr<FrontEnd>(Companion&)>& makeFrontEnd);

} // namespace orvan::app
