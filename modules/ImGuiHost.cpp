#include "modules/ImGuiHost.h"

namespace modules {

ImGuiHost GetImGuiHost() {
    ImGuiHost host;
    host.context = ImGui::GetCurrentContext();
    ImGui::GetAllocatorFunctions(&host.alloc, &host.free, &host.userData);
    return host;
}

}
