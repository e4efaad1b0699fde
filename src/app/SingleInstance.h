#pragma once
// One companion per user: a second launch hands its wish to the first (bring the window forward,
// or run commands and bring back the answers) and leaves.
//
// The socket lives in a folder only this user can enter, so nobody else can stand in for the
// running instance or keep it from starting; a socket another user owns is never connected to.

#include "app/FrontEnd.h"

#include <QLocalServer>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvan::app {

class SingleInstance {
public:
    using Commands = std::function<CommandAnswer(const std::string&)>;

    // The socket's path: in $XDG_RUNTIME_DIR when it is ours and 0700, else in a 0700 folder of
    // our own; empty when no safe place was found.
    static std::string socketPath();

    // Answers true when another instance is running and was asked to come forward.
    static bool askRunningToShow();

    // Hands the commands to the running instance one by one and writes its answers to `out`.
    // 0: every command was accepted; 1: one was refused or went unanswered; 2: none is running.
    static int send(const std::vector<std::string>& commands, std::FILE* out);

    // Becomes the running instance; `show` runs whenever a later launch asks, `commands`
    // answers what `--send` hands over.
    SingleInstance(std::function<void()> show, Commands commands);
    ~SingleInstance();

private:
    std::unique_ptr<QLocalServer> server_;
    std::string path_;
};

} // namespace orvan::app
