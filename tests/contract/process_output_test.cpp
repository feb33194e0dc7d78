// Vantorel. MIT licence, see LICENSE.
// What platform/foundation.h promises of a child's output, environment and working directory.
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/contract/process_fixture.h"

namespace vantorel::contract {
namespace {

using namespace std::string_literals;

TEST_F(ProcessContract, OnePipeJoinsBothStreamsInOrder) {
    launch({print("one "), printError("two "), print("three "), printError("four")});
    EXPECT_TRUE(wrote("one two three four")) << output_->text();
}

TEST_F(ProcessContract, TwoPipesKeepThemApart) {
    prepare(world_->makeProgram({print("out"), printError("err")}));
    const auto out = output_;
    const auto err = attach();
    process_->setStandardError(pipe_);
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([&] { return out->text() == "out" && err->text() == "err"; }))
        << out->text() << "|" << err->text();
}

TEST_F(ProcessContract, OutputArrivesWhileTheChildRuns) {
    launch({print("early"), waitForever()});
    EXPECT_TRUE(wrote("early"));
    EXPECT_TRUE(process_->isRunning());
}

TEST_F(ProcessContract, OutputBeforeTheEndIsNeverLost) {
    launch({printMany(300'000), exitWith(3)});
    EXPECT_TRUE(runUntil([this] { return output_->text().size() == 300'000; })) << output_->text().size();
    EXPECT_TRUE(ended());
    EXPECT_LE(output_->largest, 65'536U);
}

TEST_F(ProcessContract, ReaderIsCalledOneAfterTheOtherOffTheMainThread) {
    launch({printMany(200'000), printError("x"), printMany(200'000)});
    EXPECT_TRUE(runUntil([this] { return output_->text().size() == 400'001; })) << output_->text().size();
    EXPECT_FALSE(output_->overlapping);
    EXPECT_FALSE(output_->onMain);
}

TEST_F(ProcessContract, ReaderIsLeftAloneAfterTheEndOfOutput) {
    launch({print("x")});
    EXPECT_TRUE(wrote("x"));
    EXPECT_TRUE(ended());
    runFor(0.2);
    EXPECT_LE(output_->emptyCalls, 1);
    EXPECT_EQ(output_->text(), "x");
}

TEST_F(ProcessContract, BytesArriveAsTheyAre) {
    const std::string bytes = "\xFF\x00\xC3\n\r\x1B"s;
    launch({print(bytes)});
    EXPECT_TRUE(wrote(bytes));
}

TEST_F(ProcessContract, WorkingDirectoryIsTheOneSet) {
    launch({printWorkingDirectory()});
    EXPECT_TRUE(wrote(world_->folder())) << output_->text();
}

TEST_F(ProcessContract, EnvironmentReplacesTheInheritedOneAndLeavesOutWhatCannotBeHeld) {
    prepare(world_->makeProgram({printEnvironment(), print("END\n")}));
    process_->setEnvironment({{"PATH", "/usr/bin:/bin"},
                              {"KEY ", " v"},
                              {"EMPTY", ""},
                              {"export GOOD", "a=b"},
                              {"ÜML", "🤖"},
                              {"", "no name"},
                              {"A=B", "sign in name"},
                              {"N\0UL"s, "in name"},
                              {"VALUE", "in \0 value"s}});
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([this] { return output_->text().ends_with("END\n"); }));
    std::vector<std::string> lines;
    std::istringstream stream(output_->text());
    for (std::string line; std::getline(stream, line) && line != "END";)
        lines.push_back(line);
    EXPECT_THAT(lines, ::testing::UnorderedElementsAre("PATH=/usr/bin:/bin", "KEY = v", "EMPTY=", "export GOOD=a=b",
                                                       "ÜML=🤖"));
}

} // namespace
} // namespace vantorel::contract
