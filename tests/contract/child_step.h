// Vantorel. MIT licence, see LICENSE.
// What a child process of a contract case does, step by step; for a real child as a shell script.
#pragma once

#include <string>
#include <vector>

namespace vantorel::contract {

/// One step of a child. Steps run in order; after the last one the child exits with 0.
struct ChildStep {
    enum class Kind {
        printOutput,
        printError,
        /// `number` times the letter x on standard output.
        printMany,
        /// The environment as the child got it, NAME=VALUE in lines.
        printEnvironment,
        printWorkingDirectory,
        /// For `number` seconds.
        pause,
        /// Ends with the exit code `number`.
        exit,
        /// Ends by the signal `number`.
        raise,
        /// From here on a termination request has no effect.
        ignoreTermination,
        /// Waits for a termination request and ends with the exit code `number` then.
        exitOnTermination,
        waitForever,
    };

    Kind kind = Kind::exit;
    std::string text;
    double number = 0;
};

ChildStep print(std::string text);
ChildStep printError(std::string text);
ChildStep printMany(int count);
ChildStep printEnvironment();
ChildStep printWorkingDirectory();
ChildStep pauseFor(double seconds);
ChildStep exitWith(int code);
ChildStep raiseSignal(int signal);
ChildStep ignoreTermination();
ChildStep exitOnTermination(int code);
ChildStep waitForever();

/// The steps as a script for /bin/sh, without its first line.
std::string shellScript(const std::vector<ChildStep>& steps);

} // namespace vantorel::contract
