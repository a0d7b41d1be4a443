#include "engine/graphics/VulkanRenderer.h"

#include "engine/graphics/WindowGlfw.h"
#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Renderpass.h"
#include "engine/vk/Swapchain.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_vulkan.h>
#include <imgui.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace quorl::graphics {

namespace {

constexpr uint32_t kFramesInFlight = 2;
constexpr uint32_t kOffscreenImages = 2;
constexpr VkFormat kOffscreenFormat = VK_FORMAT_B8G8R8A8_UNORM;

/// ImGui reports every result it gets, successes included.
void CheckImGui(VkResult result) {
    if (result < 0)
        vk::Device::Check(result, "ImGui Vulkan backend");
}

VkSemaphore MakeSemaphore(VkDevice device) {
    VkSemaphoreCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
    VkSemaphore semaphore = VK_NULL_HANDLE;
    vk::Device::Check(vkCreateSemaphore(device, &info, nullptr, &semaphore), "vkCreateSemaphore");
    return semaphore;
}

}

/// What one frame in flight needs: its commands, the fence that says the GPU is done with them, and the semaphore the
/// acquired swapchain image signals.
struct VulkanRenderer::FrameSlot {
    explicit FrameSlot(vk::Device* device) : device(device->handle) {
        VkCommandPoolCreateInfo poolInfo{};
        poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
        poolInfo.flags = VK_COMMAND_POOL_CREATE_TRANSIENT_BIT;
        poolInfo.queueFamilyIndex = device->graphicsQueue.familyIndex;
        vk::Device::Check(vkCreateCommandPool(this->device, &poolInfo, nullptr, &pool), "vkCreateCommandPool");
        VkCommandBufferAllocateInfo allocateInfo{};
        allocateInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
        allocateInfo.commandPool = pool;
        allocateInfo.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
        allocateInfo.commandBufferCount = 1;
        vk::Device::Check(vkAllocateCommandBuffers(this->device, &allocateInfo, &commandBuffer),
            "vkAllocateCommandBuffers");
        // Signalled, so that the first wait on a slot that never ran returns at once.
        VkFenceCreateInfo fenceInfo{};
        fenceInfo.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
        fenceInfo.flags = VK_FENCE_CREATE_SIGNALED_BIT;
        vk::Device::Check(vkCreateFence(this->device, &fenceInfo, nullptr, &fence), "vkCreateFence");
        imageAvailable = MakeSemaphore(this->device);
    }
    ~FrameSlot() {
        vkDestroySemaphore(device, imageAvailable, nullptr);
        vkDestroyFence(device, fence, nullptr);
        vkDestroyCommandPool(device, pool, nullptr);
    }
    FrameSlot(FrameSlot const&) = delete;
    FrameSlot& operator=(FrameSlot const&) = delete;

    VkDevice device;
    VkCommandPool pool = VK_NULL_HANDLE;
    VkCommandBuffer commandBuffer = VK_NULL_HANDLE;
    VkFence fence = VK_NULL_HANDLE;
    VkSemaphore imageAvailable = VK_NULL_HANDLE;
};

// ---- Device and target ---------------------------------------------------------------------------------------------

VulkanRenderer::VulkanRenderer(Window* window, char const* name, unsigned int version,
    vk::PhysicalDevice::Features const& features, bool vsync, bool validation)
    : vsync(vsync)
    , window(window) {
    if (auto* glfw = dynamic_cast<WindowGlfw*>(window))
        _glfwWindow = glfw->Handle();

    vk::Device::CreateInfo info;
    info.applicationName = name;
    info.applicationVersion = version;
    info.features = features;
    info.validation = validation;
    if (_glfwWindow) {
        uint32_t count = 0;
        char const** extensions = glfwGetRequiredInstanceExtensions(&count);
        if (extensions == nullptr)
            throw std::runtime_error("GLFW finds no Vulkan support for presenting to the window");
        info.instanceExtensions.assign(extensions, extensions + count);
        info.deviceExtensions.push_back(VK_KHR_SWAPCHAIN_EXTENSION_NAME);
    }
    device = std::make_unique<vk::Device>(info);
    LoadFunctionPointersInterface(device->handle);

    if (_glfwWindow)
        vk::Device::Check(glfwCreateWindowSurface(device->instance, _glfwWindow, nullptr, &_surface),
            "glfwCreateWindowSurface");
    CreateTarget(VK_NULL_HANDLE);
    for (uint32_t i = 0; i < kFramesInFlight; ++i)
        _frames.push_back(std::make_unique<FrameSlot>(device.get()));
}

VulkanRenderer::~VulkanRenderer() {
    vkDeviceWaitIdle(device->handle);
    // A subclass has stopped its own part already; only ours can still be there.
    VulkanRenderer::StopRendering();
    if (_ownsImGuiContext)
        ImGui::DestroyContext();
    _frames.clear();
    DestroyTarget();
    if (_surface != VK_NULL_HANDLE)
        vkDestroySurfaceKHR(device->instance, _surface, nullptr);
    device.reset();
}

void VulkanRenderer::CreateTarget(VkSwapchainKHR old) {
    _targetWidth = window ? window->width : 1280;
    _targetHeight = window ? window->height : 720;
    swapchain = {};
    if (_surface != VK_NULL_HANDLE) {
        _swapchain = std::make_unique<vk::Swapchain>(device.get(), _surface, static_cast<uint32_t>(_targetWidth),
            static_cast<uint32_t>(_targetHeight), vsync, old);
        swapchain.format = _swapchain->format;
        swapchain.width = _swapchain->extent.width;
        swapchain.height = _swapchain->extent.height;
        swapchain.images = _swapchain->images;
        swapchain.imageViews = _swapchain->views;
        for (size_t i = 0; i < swapchain.images.size(); ++i)
            _renderFinished.push_back(MakeSemaphore(device->handle));
        return;
    }

    swapchain.format = kOffscreenFormat;
    swapchain.width = static_cast<uint32_t>(_targetWidth);
    swapchain.height = static_cast<uint32_t>(_targetHeight);
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = kOffscreenFormat;
    info.extent = {swapchain.width, swapchain.height, 1};
    info.mipLevels = 1;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT |
                 VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_SAMPLED_BIT;
    info.sharingMode = VK_SHARING_MODE_EXCLUSIVE;
    info.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    for (uint32_t i = 0; i < kOffscreenImages; ++i) {
        _offscreenImages.push_back(
            std::make_unique<vk::Image>(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, info));
        _offscreenViews.push_back(std::make_unique<vk::ImageView>(_offscreenImages.back().get()));
        swapchain.images.push_back(_offscreenImages.back()->image);
        swapchain.imageViews.push_back(_offscreenViews.back()->view);
    }
    // The images live in GENERAL from the start, so that CurrentImage can be read before any frame.
    vk::CommandBuffer::Run(device.get(), device->graphicsQueue, [this](VkCommandBuffer commandBuffer) {
        for (auto const& image : _offscreenImages)
            image->Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
    }, "offscreen frame images");
}

void VulkanRenderer::DestroyTarget() {
    for (VkSemaphore semaphore : _renderFinished)
        vkDestroySemaphore(device->handle, semaphore, nullptr);
    _renderFinished.clear();
    _offscreenViews.clear();
    _offscreenImages.clear();
    _swapchain.reset();
    swapchain = {};
    swapchainImageIndex = 0;
}

// ---- Rendering on and off ------------------------------------------------------------------------------------------

void VulkanRenderer::StartRendering() {
    if (ImGui::GetCurrentContext() == nullptr) {
        ImGui::CreateContext();
        _ownsImGuiContext = true;
    }
    if (_glfwWindow)
        ImGui_ImplGlfw_InitForVulkan(_glfwWindow, true);

    // Room for the font atlas and a few images the interface may show.
    VkDescriptorPoolSize size{VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, 16};
    VkDescriptorPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    poolInfo.flags = VK_DESCRIPTOR_POOL_CREATE_FREE_DESCRIPTOR_SET_BIT;
    poolInfo.maxSets = 16;
    poolInfo.poolSizeCount = 1;
    poolInfo.pPoolSizes = &size;
    vk::Device::Check(vkCreateDescriptorPool(device->handle, &poolInfo, nullptr, &_imguiPool),
        "vkCreateDescriptorPool");
    _lastImGuiFrame = std::chrono::steady_clock::now();
    _imguiReady = true;
    CreateSwapchainDependantObjects();
}

void VulkanRenderer::StopRendering() {
    vkDeviceWaitIdle(device->handle);
    DestroySwapchainDependantObjects();
    if (_imguiReady) {
        if (_glfwWindow)
            ImGui_ImplGlfw_Shutdown();
        vkDestroyDescriptorPool(device->handle, _imguiPool, nullptr);
        _imguiPool = VK_NULL_HANDLE;
        _imguiReady = false;
    }
}

void VulkanRenderer::CreateSwapchainDependantObjects() {
    _imguiPass = std::make_unique<vk::Renderpass>(device.get(), swapchain.format, swapchain.width, swapchain.height,
        0, nullptr, VK_ATTACHMENT_LOAD_OP_LOAD);
    if (_imguiReady)
        InitImGuiVulkan();
}

void VulkanRenderer::DestroySwapchainDependantObjects() {
    // ImGui's pipeline is made for the render pass, whose format may change with the swapchain.
    if (_imguiVulkan) {
        ImGui_ImplVulkan_Shutdown();
        _imguiVulkan = false;
    }
    _imguiPass.reset();
}

void VulkanRenderer::InitImGuiVulkan() {
    ImGui_ImplVulkan_InitInfo info{};
    info.Instance = device->instance;
    info.PhysicalDevice = device->physicalDevice.handle;
    info.Device = device->handle;
    info.QueueFamily = device->graphicsQueue.familyIndex;
    info.Queue = device->graphicsQueue.handle;
    info.DescriptorPool = _imguiPool;
    // ImGui cycles its vertex buffers over ImageCount frames: at least the frames in flight.
    info.MinImageCount = kFramesInFlight;
    info.ImageCount = std::max(kFramesInFlight, static_cast<uint32_t>(swapchain.images.size()));
    info.MSAASamples = VK_SAMPLE_COUNT_1_BIT;
    info.CheckVkResultFn = CheckImGui;
    ImGui_ImplVulkan_Init(&info, _imguiPass->renderPass);
    _imguiVulkan = true;
    vk::CommandBuffer::Run(device.get(), device->graphicsQueue, [](VkCommandBuffer commandBuffer) {
        ImGui_ImplVulkan_CreateFontsTexture(commandBuffer);
    }, "ImGui fonts");
    ImGui_ImplVulkan_DestroyFontUploadObjects();
}

void VulkanRenderer::ReCreateSwapchain() {
    vkDeviceWaitIdle(device->handle);
    // A minimised window has no area to make images for; try again on a later frame.
    if (_surface != VK_NULL_HANDLE && !vk::Swapchain::IsCurrentExtentValid(device.get(), _surface))
        return;
    DestroySwapchainDependantObjects();
    std::unique_ptr<vk::Swapchain> old = std::move(_swapchain);
    DestroyTarget();
    CreateTarget(old ? old->swapchain : VK_NULL_HANDLE);
    old.reset();
    _swapchainStale = false;
    CreateSwapchainDependantObjects();
}

// ---- Frames --------------------------------------------------------------------------------------------------------

bool VulkanRenderer::BeginFrame() {
    if (!Headless() && (_swapchainStale || window->width != _targetWidth || window->height != _targetHeight))
        return false;
    FrameSlot& slot = *_frames[_frameIndex];
    vk::Device::Check(vkWaitForFences(device->handle, 1, &slot.fence, VK_TRUE, UINT64_MAX), "vkWaitForFences");

    if (Headless()) {
        swapchainImageIndex = (swapchainImageIndex + 1) % static_cast<uint32_t>(swapchain.images.size());
    } else {
        VkResult const result = vkAcquireNextImageKHR(device->handle, _swapchain->swapchain, UINT64_MAX,
            slot.imageAvailable, VK_NULL_HANDLE, &swapchainImageIndex);
        if (result == VK_ERROR_OUT_OF_DATE_KHR)
            return false;
        // Suboptimal still presents: draw this frame, re-create before the next.
        if (result == VK_SUBOPTIMAL_KHR)
            _swapchainStale = true;
        else
            vk::Device::Check(result, "vkAcquireNextImageKHR");
    }
    if (_imguiReady)
        BeginImGuiFrame();
    return true;
}

void VulkanRenderer::BeginImGuiFrame() {
    ImGui_ImplVulkan_NewFrame();
    if (_glfwWindow) {
        ImGui_ImplGlfw_NewFrame();
    } else {
        auto const now = std::chrono::steady_clock::now();
        ImGuiIO& io = ImGui::GetIO();
        io.DisplaySize = ImVec2(static_cast<float>(swapchain.width), static_cast<float>(swapchain.height));
        // ImGui needs a positive step; two frames within one clock tick would give none.
        io.DeltaTime = std::max(std::chrono::duration<float>(now - _lastImGuiFrame).count(), 1e-6f);
        _lastImGuiFrame = now;
    }
    ImGui::NewFrame();
}

void VulkanRenderer::EndFrame(std::function<void(VkCommandBuffer)> record, std::vector<VkSemaphore> waitSemaphores,
    std::vector<unsigned int> waitStages, VkFence fence) {
    FrameSlot& slot = *_frames[_frameIndex];
    VkImage const image = CurrentImage();
    vk::Device::Check(vkResetCommandPool(device->handle, slot.pool, 0), "vkResetCommandPool");
    VkCommandBufferBeginInfo beginInfo{};
    beginInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    beginInfo.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    vk::Device::Check(vkBeginCommandBuffer(slot.commandBuffer, &beginInfo), "vkBeginCommandBuffer");
    currentCommandBuffer = slot.commandBuffer;

    // The last frame's content is of no use: start from opaque black.
    vk::Image::Transition(slot.commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT,
        VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
    VkClearColorValue const black{{0.0f, 0.0f, 0.0f, 1.0f}};
    VkImageSubresourceRange const range{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    vkCmdClearColorImage(slot.commandBuffer, image, VK_IMAGE_LAYOUT_GENERAL, &black, 1, &range);
    vk::Image::Transition(slot.commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT,
        VK_IMAGE_LAYOUT_GENERAL, VK_IMAGE_LAYOUT_GENERAL);

    if (record)
        record(slot.commandBuffer);

    if (_imguiVulkan) {
        ImGui::Render();
        _imguiPass->Begin(slot.commandBuffer, {swapchain.imageViews[swapchainImageIndex]}, {},
            VK_SUBPASS_CONTENTS_INLINE);
        ImGui_ImplVulkan_RenderDrawData(ImGui::GetDrawData(), slot.commandBuffer);
        _imguiPass->End(slot.commandBuffer);
    }
    if (!Headless())
        vk::Image::Transition(slot.commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT,
            VK_IMAGE_LAYOUT_GENERAL, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR);

    vk::Device::Check(vkEndCommandBuffer(slot.commandBuffer), "vkEndCommandBuffer");
    currentCommandBuffer = VK_NULL_HANDLE;
    Submit(slot, waitSemaphores, waitStages, fence);
    if (!Headless())
        Present();
    _frameIndex = (_frameIndex + 1) % kFramesInFlight;
}

void VulkanRenderer::Submit(FrameSlot& slot, std::vector<VkSemaphore> const& waitSemaphores,
    std::vector<unsigned int> const& waitStages, VkFence fence) {
    if (waitSemaphores.size() != waitStages.size())
        throw std::invalid_argument("EndFrame: one wait stage is needed per wait semaphore");
    std::vector<VkSemaphore> waits;
    std::vector<VkPipelineStageFlags> stages;
    if (!Headless()) {
        waits.push_back(slot.imageAvailable);
        stages.push_back(VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT);
    }
    waits.insert(waits.end(), waitSemaphores.begin(), waitSemaphores.end());
    stages.insert(stages.end(), waitStages.begin(), waitStages.end());

    VkSubmitInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    info.waitSemaphoreCount = static_cast<uint32_t>(waits.size());
    info.pWaitSemaphores = waits.data();
    info.pWaitDstStageMask = stages.data();
    info.commandBufferCount = 1;
    info.pCommandBuffers = &slot.commandBuffer;
    // Headless, nothing waits for the frame: a signalled semaphore would never be waited on and could not be reused.
    if (!Headless()) {
        info.signalSemaphoreCount = 1;
        info.pSignalSemaphores = &_renderFinished[swapchainImageIndex];
    }
    vk::Device::Check(vkResetFences(device->handle, 1, &slot.fence), "vkResetFences");
    std::lock_guard lock(*device->graphicsQueue.mutex);
    vk::Device::Check(vkQueueSubmit(device->graphicsQueue.handle, 1, &info, slot.fence), "vkQueueSubmit");
    // A submission without work signals its fence once all earlier submissions, this frame's included, are done.
    if (fence != VK_NULL_HANDLE)
        vk::Device::Check(vkQueueSubmit(device->graphicsQueue.handle, 0, nullptr, fence), "vkQueueSubmit");
}

void VulkanRenderer::Present() {
    VkPresentInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_PRESENT_INFO_KHR;
    info.waitSemaphoreCount = 1;
    info.pWaitSemaphores = &_renderFinished[swapchainImageIndex];
    info.swapchainCount = 1;
    info.pSwapchains = &_swapchain->swapchain;
    info.pImageIndices = &swapchainImageIndex;
    VkResult result;
    {
        std::lock_guard lock(*device->graphicsQueue.mutex);
        result = vkQueuePresentKHR(device->graphicsQueue.handle, &info);
    }
    if (result == VK_ERROR_OUT_OF_DATE_KHR || result == VK_SUBOPTIMAL_KHR) {
        _swapchainStale = true;
        return;
    }
    vk::Device::Check(result, "vkQueuePresentKHR");
}

}
