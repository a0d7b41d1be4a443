#include "game/Game.h"

#include <imgui.h>

void Game::SetupUiStyle() {
    ImGuiStyle& style = ImGui::GetStyle();
    style.Alpha = 0.8f;
    style.WindowPadding = ImVec2(10, 10);
    style.WindowRounding = 0;
    style.WindowBorderSize = 2;
    style.WindowMinSize = ImVec2(300, 100);
    style.WindowTitleAlign = ImVec2(0.5f, 0.5f);
    style.FramePadding = ImVec2(10, 5);
    style.FrameRounding = 4;
    style.TabRounding = 4;
    style.TabBorderSize = 2;

    ImVec4* colors = style.Colors;
    colors[ImGuiCol_Text] = ImVec4(1, 1, 1, 1);
    colors[ImGuiCol_WindowBg] = ImVec4(0, 0, 0, 1);
    colors[ImGuiCol_Border] = ImVec4(0, 0, 0, 0);
    colors[ImGuiCol_BorderShadow] = ImVec4(0, 0, 0, 0.5f);
    colors[ImGuiCol_TitleBg] = ImVec4(0, 0, 0, 0.7f);
    colors[ImGuiCol_TitleBgActive] = ImVec4(0, 0, 0, 0.8f);
    colors[ImGuiCol_TitleBgCollapsed] = ImVec4(0, 0, 0, 0.3f);
    colors[ImGuiCol_Tab] = ImVec4(0.1f, 0.1f, 0.1f, 1);
    colors[ImGuiCol_TabHovered] = ImVec4(0.5f, 0.6f, 0.7f, 1);
    colors[ImGuiCol_TabActive] = ImVec4(0.1f, 0.3f, 0.5f, 1);
    colors[ImGuiCol_TabUnfocused] = ImVec4(0, 0, 0, 1);
    colors[ImGuiCol_TabUnfocusedActive] = ImVec4(0.1f, 0.3f, 0.5f, 1);
}
