#include <gmock/gmock.h>

#include "shell/command_table.h"

namespace kelmio::test {
namespace {

TEST(CommandTable, FindsACommandOnTheSurfaceAskedOnly) {
  CommandBars bars;
  BuildMainCommandBars(bars);
  EXPECT_EQ(EnableMenuButton(bars, command::kRecord, false), nullptr) << "Record is on the toolbar alone";
  ASSERT_NE(EnableToolbarButton(bars, command::kRecord, false), nullptr);
  EXPECT_FALSE(bars.ToolBars().front().Find(command::kRecord)->enabled);
  EXPECT_TRUE(CheckMenuButton(bars, command::kToolbar, true)->checked) << "a popup's popup is searched too";
  EXPECT_EQ(CheckToolbarButton(bars, command::kToolbar, true), nullptr);
  EXPECT_EQ(EnableMenuButton(bars, 0, false), nullptr) << "a popup that is no command has no number";
}

} // namespace
} // namespace kelmio::test
