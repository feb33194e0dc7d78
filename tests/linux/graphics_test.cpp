// Vantorel. MIT licence, see LICENSE.
// What GTK is told to draw with.
#include "platform/linux/graphics.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace vantorel::gtk {
namespace {

class DeviceFolder : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "devices-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        path = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(path); }
    void makeDevice(const std::string& name) const {
        const std::filesystem::path file = path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << "";
    }

    std::filesystem::path path;
};

TEST_F(DeviceFolder, WithoutDevicesThereIsNoGraphicsProcessor) {
    EXPECT_FALSE(hasGraphicsProcessor(path));
    EXPECT_FALSE(hasGraphicsProcessor(path / "absent"));
}

TEST_F(DeviceFolder, AScreenAloneIsNone) {
    makeDevice("dri/card0");
    EXPECT_FALSE(hasGraphicsProcessor(path));
}

TEST_F(DeviceFolder, ARenderNodeIsOne) {
    makeDevice("dri/renderD128");
    EXPECT_TRUE(hasGraphicsProcessor(path));
}

TEST_F(DeviceFolder, TheClosedDriverHasAnotherDevice) {
    makeDevice("nvidiactl");
    EXPECT_TRUE(hasGraphicsProcessor(path));
}

TEST(GraphicsVariables, AreOnlySetWithoutAGraphicsProcessor) {
    EXPECT_EQ(graphicsVariables({}, false),
              (Environment{
                  {"GSK_RENDERER", "cairo"}, {"GDK_DEBUG", "gl-disable"}, {"WEBKIT_DISABLE_COMPOSITING_MODE", "1"}}));
    EXPECT_TRUE(graphicsVariables({}, true).empty());
}

TEST(GraphicsVariables, LeaveTheUsersChoiceAlone) {
    const Environment inherited = {
        {"GSK_RENDERER", "ngl"}, {"GDK_DEBUG", ""}, {"WEBKIT_DISABLE_COMPOSITING_MODE", "0"}};
    EXPECT_TRUE(graphicsVariables(inherited, false).empty());
}

} // namespace
} // namespace vantorel::gtk
