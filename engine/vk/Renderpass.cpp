#include "engine/vk/Renderpass.h"

#include "engine/vk/Device.h"
#include "engine/vk/Image.h"

namespace quorl::vk {

namespace {

VkAttachmentDescription Attachment(VkFormat format, VkAttachmentLoadOp loadOp) {
    VkAttachmentDescription attachment{};
    attachment.format = format;
    attachment.samples = VK_SAMPLE_COUNT_1_BIT;
    attachment.loadOp = loadOp;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    attachment.stencilLoadOp = loadOp;
    attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_STORE;
    attachment.initialLayout = VK_IMAGE_LAYOUT_GENERAL;
    attachment.finalLayout = VK_IMAGE_LAYOUT_GENERAL;
    return attachment;
}

}

Renderpass::Renderpass(Device* device, VkFormat format, unsigned width, unsigned height, unsigned flags,
    Image const* depth, VkAttachmentLoadOp loadOp) {
    Create(device, format, width, height, flags, depth, loadOp);
}

Renderpass::~Renderpass() {
    Destroy();
}

void Renderpass::Create(Device* device, VkFormat format, unsigned width, unsigned height, unsigned flags,
    Image const* depth, VkAttachmentLoadOp loadOp) {
    Destroy();
    this->device = device;
    this->format = format;
    this->width = width;
    this->height = height;
    this->flags = flags;
    this->depth = depth;
    this->loadOp = loadOp;

    bool const hasColour = format != VK_FORMAT_UNDEFINED;
    std::vector<VkAttachmentDescription> attachments;
    if (hasColour) {
        attachments.push_back(Attachment(format, loadOp));
    }
    VkAttachmentReference colourReference{0, VK_IMAGE_LAYOUT_GENERAL};
    VkAttachmentReference depthReference{hasColour ? 1u : 0u, VK_IMAGE_LAYOUT_GENERAL};
    VkSubpassDescription subpass{};
    subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
    subpass.colorAttachmentCount = hasColour ? 1 : 0;
    subpass.pColorAttachments = hasColour ? &colourReference : nullptr;
    if (depth != nullptr) {
        attachments.push_back(Attachment(depth->info.format, loadOp));
        subpass.pDepthStencilAttachment = &depthReference;
    }

    // Before: uploads, compute passes and earlier passes wrote the attachments and the buffers the shaders read.
    // After: copies, blits and compute read the result, and later passes draw over it.
    VkPipelineStageFlags const fragmentTests =
        VK_PIPELINE_STAGE_EARLY_FRAGMENT_TESTS_BIT | VK_PIPELINE_STAGE_LATE_FRAGMENT_TESTS_BIT;
    VkAccessFlags const depthAccess =
        VK_ACCESS_DEPTH_STENCIL_ATTACHMENT_READ_BIT | VK_ACCESS_DEPTH_STENCIL_ATTACHMENT_WRITE_BIT;
    VkSubpassDependency before{};
    before.srcSubpass = VK_SUBPASS_EXTERNAL;
    before.dstSubpass = 0;
    before.srcStageMask = VK_PIPELINE_STAGE_TRANSFER_BIT | VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT |
                          VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT | fragmentTests;
    before.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT | VK_ACCESS_SHADER_WRITE_BIT |
                           VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | VK_ACCESS_DEPTH_STENCIL_ATTACHMENT_WRITE_BIT;
    before.dstStageMask = VK_PIPELINE_STAGE_VERTEX_SHADER_BIT | VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT |
                          VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT | fragmentTests;
    before.dstAccessMask = VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_READ_BIT |
                           VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | depthAccess;
    VkSubpassDependency after{};
    after.srcSubpass = 0;
    after.dstSubpass = VK_SUBPASS_EXTERNAL;
    after.srcStageMask = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT | fragmentTests;
    after.srcAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | VK_ACCESS_DEPTH_STENCIL_ATTACHMENT_WRITE_BIT;
    after.dstStageMask = VK_PIPELINE_STAGE_TRANSFER_BIT | VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT |
                         VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT | VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT |
                         fragmentTests;
    after.dstAccessMask = VK_ACCESS_TRANSFER_READ_BIT | VK_ACCESS_TRANSFER_WRITE_BIT | VK_ACCESS_SHADER_READ_BIT |
                          VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | depthAccess;
    VkSubpassDependency dependencies[] = {before, after};

    VkRenderPassCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO;
    info.attachmentCount = static_cast<uint32_t>(attachments.size());
    info.pAttachments = attachments.data();
    info.subpassCount = 1;
    info.pSubpasses = &subpass;
    info.dependencyCount = 2;
    info.pDependencies = dependencies;
    Device::Check(vkCreateRenderPass(device->handle, &info, nullptr, &renderPass), "vkCreateRenderPass");
}

void Renderpass::Begin(VkCommandBuffer commandBuffer, std::vector<VkImageView> const& views,
    std::vector<VkClearValue> const& clears, VkSubpassContents contents) {
    VkRenderPassBeginInfo info{};
    info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO;
    info.renderPass = renderPass;
    info.framebuffer = Framebuffer(views);
    info.renderArea = {{0, 0}, {width, height}};
    info.clearValueCount = static_cast<uint32_t>(clears.size());
    info.pClearValues = clears.data();
    vkCmdBeginRenderPass(commandBuffer, &info, contents);
}

void Renderpass::End(VkCommandBuffer commandBuffer) {
    vkCmdEndRenderPass(commandBuffer);
}

void Renderpass::Destroy() {
    if (device == nullptr) {
        return;
    }
    for (auto const& [views, framebuffer] : _framebuffers) {
        vkDestroyFramebuffer(device->handle, framebuffer, nullptr);
    }
    _framebuffers.clear();
    vkDestroyRenderPass(device->handle, renderPass, nullptr);
    renderPass = VK_NULL_HANDLE;
}

VkFramebuffer Renderpass::Framebuffer(std::vector<VkImageView> const& views) {
    if (auto found = _framebuffers.find(views); found != _framebuffers.end()) {
        return found->second;
    }
    VkFramebufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO;
    info.renderPass = renderPass;
    info.attachmentCount = static_cast<uint32_t>(views.size());
    info.pAttachments = views.data();
    info.width = width;
    info.height = height;
    info.layers = 1;
    VkFramebuffer framebuffer = VK_NULL_HANDLE;
    Device::Check(vkCreateFramebuffer(device->handle, &info, nullptr, &framebuffer), "vkCreateFramebuffer");
    _framebuffers.emplace(views, framebuffer);
    return framebuffer;
}

}
