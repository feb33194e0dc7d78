// Vantorel. MIT licence, see LICENSE.
// Steps of a child process as a shell script.
#include "tests/contract/child_step.h"

#include <utility>

namespace vantorel::contract {

namespace {

/// A printf format of octal escapes: every byte goes through every shell unchanged.
std::string escaped(const std::string& text) {
    std::string format;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        format += '\\';
        for (const int shift : {6, 3, 0})
            format += static_cast<char>('0' + ((byte >> shift) & 7));
    }
    return "'" + format + "'";
}

std::string shellLine(const ChildStep& step) {
    const std::string whole = std::to_string(static_cast<long>(step.number));
    switch (step.kind) {
    case ChildStep::Kind::printOutput:
        return "printf " + escaped(step.text);
    case ChildStep::Kind::printError:
        return "printf " + escaped(step.text) + " >&2";
    case ChildStep::Kind::printMany:
        return "head -c " + whole + " /dev/zero | tr '\\000' x";
    case ChildStep::Kind::printEnvironment:
        return "tr '\\000' '\\n' < /proc/$$/environ";
    case ChildStep::Kind::printWorkingDirectory:
        return "printf '%s' \"$(pwd -P)\"";
    case ChildStep::Kind::pause:
        return "sleep " + std::to_string(step.number);
    case ChildStep::Kind::exit:
        return "exit " + whole;
    case ChildStep::Kind::raise:
        return "kill -" + whole + " $$";
    case ChildStep::Kind::ignoreTermination:
        return "trap '' TERM";
    case ChildStep::Kind::exitOnTermination:
        return "trap 'exit " + whole + "' TERM; printf ready; while :; do sleep 0.02; done";
    case ChildStep::Kind::waitForever:
        return "exec sleep 1000";
    }
    return {};
}

} // namespace

ChildStep print(std::string text) { return {ChildStep::Kind::printOutput, std::move(text), 0}; }

ChildStep printError(std::string text) { return {ChildStep::Kind::printError, std::move(text), 0}; }

ChildStep printMany(int count) { return {ChildStep::Kind::printMany, {}, static_cast<double>(count)}; }

ChildStep printEnvironment() { return {ChildStep::Kind::printEnvironment, {}, 0}; }

ChildStep printWorkingDirectory() { return {ChildStep::Kind::printWorkingDirectory, {}, 0}; }

ChildStep pauseFor(double seconds) { return {ChildStep::Kind::pause, {}, seconds}; }

ChildStep exitWith(int code) { return {ChildStep::Kind::exit, {}, static_cast<double>(code)}; }

ChildStep raiseSignal(int signal) { return {ChildStep::Kind::raise, {}, static_cast<double>(signal)}; }

ChildStep ignoreTermination() { return {ChildStep::Kind::ignoreTermination, {}, 0}; }

ChildStep exitOnTermination(int code) { return {ChildStep::Kind::exitOnTermination, {}, static_cast<double>(code)}; }

ChildStep waitForever() { return {ChildStep::Kind::waitForever, {}, 0}; }

std::string shellScript(const std::vector<ChildStep>& steps) {
    std::string script;
    for (const ChildStep& step : steps)
        script += shellLine(step) + "\n";
    return script;
}

} // namespace vantorel::contract
