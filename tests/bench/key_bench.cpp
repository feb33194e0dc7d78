// Vantorel. MIT licence, see LICENSE.
// What one key press costs the shell's process: every press anywhere on the system passes through this handler, and is
// logged. `key_bench --presses N` just does N ordinary presses, for counting instructions.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "hotkeys/hotkey_table.h"
#include "hotkeys/key_handler.h"

namespace {

using vantorel::KeyEvent;
using vantorel::KeyHandler;

constexpr std::uint64_t kWholeChord = 0x1E0000;

KeyHandler handler() {
    return {vantorel::hotkeyTable(), [](const std::string& name) { benchmark::DoNotOptimize(name.data()); }};
}

void handle(benchmark::State& state, const KeyEvent& event) {
    const KeyHandler judge = handler();
    for (auto step : state) {
        static_cast<void>(step);
        judge(event);
    }
}

void ordinaryKey(benchmark::State& state) { handle(state, KeyEvent{1, 0, "s"}); }
void hotkey(benchmark::State& state) { handle(state, KeyEvent{1, kWholeChord, "S"}); }

BENCHMARK(ordinaryKey)->Unit(benchmark::kMicrosecond);
BENCHMARK(hotkey)->Unit(benchmark::kMicrosecond);

// The log goes to standard output; nobody wants to read it here. Results go to standard error and --benchmark_out.
bool discardStandardOutput() {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return null >= 0 && dup2(null, STDOUT_FILENO) >= 0;
}

} // namespace

int main(int argc, char** argv) {
    if (!discardStandardOutput())
        return EXIT_FAILURE;
    if (argc == 3 && std::string_view(argv[1]) == "--presses") {
        const KeyHandler judge = handler();
        const KeyEvent event{1, 0, "s"};
        for (long left = std::strtol(argv[2], nullptr, 10); left > 0; --left)
            judge(event);
        return EXIT_SUCCESS;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
    reporter.SetOutputStream(&std::cerr);
    reporter.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return EXIT_SUCCESS;
}
