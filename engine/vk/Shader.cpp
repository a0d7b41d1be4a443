#include "engine/vk/Shader.h"

#include "engine/vk/Device.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace quorl::vk {

namespace {

constexpr uint32_t SpirvMagic = 0x07230203;
/// Magic, version, generator, bound and schema: a module shorter than its header is not SPIR-V.
constexpr size_t SpirvHeaderWords = 5;

std::vector<uint32_t> ReadSpirv(std::string const& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error(file + ": cannot read shader");
    }
    std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad()) {
        throw std::runtime_error(file + ": cannot read shader");
    }
    if (bytes.size() % sizeof(uint32_t) != 0 || bytes.size() < SpirvHeaderWords * sizeof(uint32_t)) {
        throw std::runtime_error(file + ": not SPIR-V");
    }
    std::vector<uint32_t> words(bytes.size() / sizeof(uint32_t));
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(words.data()));
    if (words[0] != SpirvMagic) {
        throw std::runtime_error(file + ": not SPIR-V");
    }
    return words;
}

VkShaderModule CreateModule(Device* device, std::string const& file, std::vector<uint32_t> const& code) {
    VkShaderModuleCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    info.codeSize = code.size() * sizeof(uint32_t);
    info.pCode = code.data();
    VkShaderModule module = VK_NULL_HANDLE;
    std::string const step = file + ": vkCreateShaderModule";
    Device::Check(vkCreateShaderModule(device->handle, &info, nullptr, &module), step.c_str());
    device->SetDebugName(VK_OBJECT_TYPE_SHADER_MODULE, reinterpret_cast<uint64_t>(module), file.c_str());
    return module;
}

}

ShaderRef Shader::Load(Device* device, std::string const& path) {
    // Both files are read before any module exists, so a missing stage leaves nothing to clean up.
    std::string vertexFile = path + ".vert.spv";
    std::string fragmentFile = path + ".frag.spv";
    std::vector<uint32_t> vertexCode = ReadSpirv(vertexFile);
    std::vector<uint32_t> fragmentCode = ReadSpirv(fragmentFile);

    ShaderRef shader(new Shader(device, path));
    shader->vertexModule = CreateModule(device, vertexFile, vertexCode);
    shader->fragmentModule = CreateModule(device, fragmentFile, fragmentCode);
    return shader;
}

Shader::Shader(Device* device, std::string path) : device(device), path(std::move(path)) {}

Shader::~Shader() {
    vkDestroyShaderModule(device->handle, vertexModule, nullptr);
    vkDestroyShaderModule(device->handle, fragmentModule, nullptr);
}

void Shader::AddPipeline(Pipeline* pipeline) {
    pipelines.insert(pipeline);
}

void Shader::RemovePipeline(Pipeline* pipeline) {
    pipelines.erase(pipeline);
}

std::vector<VkPipelineShaderStageCreateInfo> Shader::Stages() const {
    VkPipelineShaderStageCreateInfo vertex{};
    vertex.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    vertex.stage = VK_SHADER_STAGE_VERTEX_BIT;
    vertex.module = vertexModule;
    vertex.pName = "main";
    VkPipelineShaderStageCreateInfo fragment = vertex;
    fragment.stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    fragment.module = fragmentModule;
    return {vertex, fragment};
}

}
