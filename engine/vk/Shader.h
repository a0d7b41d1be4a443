#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quorl::vk {

class Device;
class Pipeline;
class Shader;

using ShaderRef = std::shared_ptr<Shader>;

/// The vertex and fragment stages of one shader program, compiled to "<path>.vert.spv" and "<path>.frag.spv", with
/// the pipelines built from it. Pipelines hold a ShaderRef, so the modules outlive every pipeline that uses them.
class QUORL_EXPORT Shader {
public:
    /// path: relative to the working directory (the game tree), without the ".vert.spv" / ".frag.spv" suffixes.
    /// Throws std::runtime_error("<file>: cannot read shader") or ("<file>: not SPIR-V").
    static ShaderRef Load(Device* device, std::string const& path);
    ~Shader();
    Shader(Shader const&) = delete;
    Shader& operator=(Shader const&) = delete;

    void AddPipeline(Pipeline* pipeline);
    void RemovePipeline(Pipeline* pipeline);

    /// The stage infos for VkGraphicsPipelineCreateInfo, entry point "main".
    std::vector<VkPipelineShaderStageCreateInfo> Stages() const;

    Device* device;
    std::string path;
    VkShaderModule vertexModule = VK_NULL_HANDLE;
    VkShaderModule fragmentModule = VK_NULL_HANDLE;
    /// Pipelines built from this shader, which must be rebuilt when it changes.
    std::set<Pipeline*> pipelines;

private:
    Shader(Device* device, std::string path);
};

}
