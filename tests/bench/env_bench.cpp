// Vantorel. MIT licence, see LICENSE.
// How long reading an .env text takes: the main thread waits for it at launch.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

#include "server/env_file.h"

namespace {

constexpr std::size_t kMebibyte = 1024 * 1024;

// Ordinary lines, comments and wide characters, up to a mebibyte.
std::string ordinaryText() {
    std::string text;
    for (int number = 0; text.size() < kMebibyte; ++number) {
        text += "# setting number " + std::to_string(number) + "\r\n";
        text += "  SETTING_" + std::to_string(number) + "=a value of some length, with ümläuts and 🎉 = signs\r\n\n";
    }
    return text;
}

// The shortest lines there are, so that the work per line shows.
std::string shortLines() {
    std::string text;
    while (text.size() < kMebibyte)
        text += "A=\n";
    return text;
}

// Nothing but blanks and line breaks of every kind.
std::string blanks() {
    std::string text;
    while (text.size() < kMebibyte)
        text += " \t\u00a0\u3000\u2028\u0085\v\f\r\n";
    return text;
}

void parse(benchmark::State& state, const std::string& text) {
    for (auto step : state) {
        static_cast<void>(step);
        benchmark::DoNotOptimize(vantorel::parseEnvText(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size()));
}

void ordinary(benchmark::State& state) { parse(state, ordinaryText()); }
void manyShortLines(benchmark::State& state) { parse(state, shortLines()); }
void nothingButBlanks(benchmark::State& state) { parse(state, blanks()); }

BENCHMARK(ordinary)->Unit(benchmark::kMillisecond);
BENCHMARK(manyShortLines)->Unit(benchmark::kMillisecond);
BENCHMARK(nothingButBlanks)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
