#include "game/Game.h"

#include <gtest/gtest.h>
#include <imgui.h>

TEST(GameUiStyleTest, SetsOurValuesAndLeavesTheRest) {
    ImGui::CreateContext();
    ImGuiStyle defaults = ImGui::GetStyle();
    Game::SetupUiStyle();
    ImGuiStyle const& style = ImGui::GetStyle();

    EXPECT_FLOAT_EQ(style.Alpha, 0.8f);
    EXPECT_EQ(style.WindowMinSize.x, 300);
    EXPECT_EQ(style.WindowMinSize.y, 100);
    EXPECT_EQ(style.WindowRounding, 0);
    EXPECT_EQ(style.TabBorderSize, 2);
    EXPECT_FLOAT_EQ(style.Colors[ImGuiCol_TabHovered].y, 0.6f);
    EXPECT_FLOAT_EQ(style.Colors[ImGuiCol_BorderShadow].w, 0.5f);
    EXPECT_EQ(style.ScrollbarSize, defaults.ScrollbarSize);
    EXPECT_EQ(style.Colors[ImGuiCol_Button].x, defaults.Colors[ImGuiCol_Button].x);
    ImGui::DestroyContext();
}
