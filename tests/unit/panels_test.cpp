// Vantorel. MIT licence, see LICENSE.
// The page's alert, confirm and prompt, and its requests for new windows.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PanelsTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }

    std::vector<bool> confirmed(long code) {
        std::vector<bool> answers;
        platform_.user.willAnswer(code);
        page().confirm("Sure?", [&answers](bool answer) { answers.push_back(answer); });
        return answers;
    }
    using Text = std::optional<std::string>;
    std::vector<Text> prompted(const Text& defaultText, AlertAnswer user) {
        std::vector<Text> answers;
        platform_.user.willAnswer(std::move(user));
        page().prompt("Name?", defaultText, [&answers](Text answer) { answers.push_back(std::move(answer)); });
        return answers;
    }
};

TEST_F(PanelsTest, NewWindowGoesToTheBrowser) {
    EXPECT_EQ(page().openWindow("https://example.org/a?b=c#d"), nullptr);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("log \"🌐 Opening URL in browser: https://example.org/a?b=c#d\"",
                                                        "workspace.openUrl(\"https://example.org/a?b=c#d\")"));
    EXPECT_THAT(page().loads(), IsEmpty());
}

TEST_F(PanelsTest, EverySchemeIsHandedOn) {
    for (const char* address : {"http://localhost:8080/", "mailto:me@example.org", "file:///etc/hosts", "x-own:1"}) {
        EXPECT_EQ(page().openWindow(address), nullptr);
    }
    EXPECT_THAT(platform_.desktop.opened(),
                ElementsAre("http://localhost:8080/", "mailto:me@example.org", "file:///etc/hosts", "x-own:1"));
}

TEST_F(PanelsTest, NewWindowWithoutAnAddressIsDropped) {
    EXPECT_EQ(page().openWindow(std::nullopt), nullptr);
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(PanelsTest, AlertShowsTheMessageAndCompletesOnce) {
    int completions = 0;
    page().alert("Hello", [&] {
        ++completions;
        EXPECT_EQ(alert().runCount(), 1);
    });
    EXPECT_EQ(completions, 1);
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("makeAlert() -> alert1", "alert1.setMessageText(\"Vantor\")",
                            "alert1.setInformativeText(\"Hello\")", "alert1.setAlertStyle(1)",
                            "alert1.addButtonWithTitle(\"OK\")", "alert1.runModal()", "alert1 answered 1000"));
}

TEST_F(PanelsTest, AlertThatEndsWithoutAButtonCompletesToo) {
    int completions = 0;
    platform_.user.willAnswer(-1);
    page().alert("", [&completions] { ++completions; });
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(alert().informativeText(), "");
}

TEST_F(PanelsTest, ConfirmAsBuilt) {
    confirmed(1000);
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("makeAlert() -> alert1", "alert1.setMessageText(\"Vantor\")",
                            "alert1.setInformativeText(\"Sure?\")", "alert1.setAlertStyle(0)",
                            "alert1.addButtonWithTitle(\"OK\")", "alert1.addButtonWithTitle(\"Cancel\")",
                            "alert1.runModal()", "alert1 answered 1000"));
}

TEST_F(PanelsTest, ConfirmIsTrueForTheFirstButtonOnly) {
    EXPECT_THAT(confirmed(1000), ElementsAre(true));
    for (const long code : {1001L, 1002L, 999L, 0L, 1L, -1000L, -1001L}) {
        EXPECT_THAT(confirmed(code), ElementsAre(false)) << code;
    }
}

TEST_F(PanelsTest, PromptAsBuilt) {
    prompted("seed", [](FakeAlert& shown) {
        EXPECT_EQ(shown.accessory()->stringValue(), "seed");
        return 1000L;
    });
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("makeAlert() -> alert1", "alert1.setMessageText(\"Vantor\")",
                            "alert1.setInformativeText(\"Name?\")", "alert1.addButtonWithTitle(\"OK\")",
                            "alert1.addButtonWithTitle(\"Cancel\")", "makeTextField({{0, 0}, {300, 24}}) -> textField2",
                            "textField2.setStringValue(\"seed\")", "alert1.setAccessoryView(textField2)",
                            "alert1.runModal()", "alert1 answered 1000"));
    EXPECT_FALSE(alert().styleWasSet());
    EXPECT_TRUE(alert().accessory()->editable());
}

TEST_F(PanelsTest, PromptAnswersWithTheFieldsText) {
    EXPECT_THAT(prompted("seed", [](FakeAlert& shown) { return shown.accessory()->type("typed"), 1000L; }),
                ElementsAre(Text("typed")));
    EXPECT_THAT(prompted("seed", [](FakeAlert&) { return 1000L; }), ElementsAre(Text("seed")));
}

TEST_F(PanelsTest, EmptyAnswerIsNotNoAnswer) {
    EXPECT_THAT(prompted(std::nullopt,
                         [](FakeAlert& shown) {
                             EXPECT_EQ(shown.accessory()->stringValue(), "");
                             return 1000L;
                         }),
                ElementsAre(Text("")));
    EXPECT_THAT(prompted("seed", [](FakeAlert& shown) { return shown.accessory()->type(""), 1000L; }),
                ElementsAre(Text("")));
}

TEST_F(PanelsTest, CancelledPromptHasNoAnswerEvenWhenEdited) {
    for (const long code : {1001L, 0L, -1000L}) {
        EXPECT_THAT(prompted("seed", [code](FakeAlert& shown) { return shown.accessory()->type("typed"), code; }),
                    ElementsAre(Text()));
    }
}

TEST_F(PanelsTest, EachPanelIsAFreshAlert) {
    confirmed(1000);
    confirmed(1001);
    page().alert("x", [] {});
    EXPECT_EQ(platform_.alerts.size(), 3U);
    for (const auto& shown : platform_.alerts)
        EXPECT_EQ(shown->runCount(), 1);
}

TEST_F(PanelsTest, TheRestGoesOnWhileAPanelIsUp) {
    platform_.user.willAnswer([this](FakeAlert&) {
        platform_.advance(2);
        platform_.http.answer(0, FakeUrlSession::status(200));
        expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
        return kAlertFirstButtonReturn;
    });
    bool completed = false;
    page().alert("x", [&completed] { completed = true; });
    EXPECT_TRUE(completed);
}

TEST_F(PanelsTest, PanelsLeaveLogAndStripAlone) {
    confirmed(1000);
    page().alert("x", [] {});
    prompted("seed", [](FakeAlert&) { return 1001L; });
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_EQ(platform_.recorder.count("mainQueue.async()"), 0U);
}

} // namespace
} // namespace vantorel::fake
