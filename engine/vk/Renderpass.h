#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <map>
#include <vector>

namespace quorl::vk {

class Device;
class Image;

/// A render pass of one subpass over one colour attachment (and a depth attachment when given), with the
/// framebuffers for the image views it has been begun with. Every attachment stays in VK_IMAGE_LAYOUT_GENERAL, the
/// layout the frame image keeps for all of a frame's commands; with VK_ATTACHMENT_LOAD_OP_LOAD it draws over what
/// earlier commands left there. Earlier transfer, compute and colour writes are visible to it, and later transfers
/// wait for it.
class QUORL_EXPORT Renderpass {
public:
    /// flags: kept as given for the caller. depth: may be null; its format comes from its create info. A format of
    /// VK_FORMAT_UNDEFINED makes a depth-only pass (a shadow map): no colour attachment, and the views are the depth
    /// view alone.
    Renderpass(Device* device, VkFormat format, unsigned width, unsigned height, unsigned flags, Image const* depth,
        VkAttachmentLoadOp loadOp);
    ~Renderpass();
    Renderpass(Renderpass const&) = delete;
    Renderpass& operator=(Renderpass const&) = delete;

    /// Destroys what there was and makes the render pass anew, for a new size or format.
    void Create(Device* device, VkFormat format, unsigned width, unsigned height, unsigned flags, Image const* depth,
        VkAttachmentLoadOp loadOp);
    /// views: the colour view, then the depth view when the pass has depth. clears: one per attachment, or none when
    /// nothing is cleared. The framebuffer for `views` is made on first use and kept until Destroy.
    void Begin(VkCommandBuffer commandBuffer, std::vector<VkImageView> const& views,
        std::vector<VkClearValue> const& clears, VkSubpassContents contents);
    void End(VkCommandBuffer commandBuffer);
    /// Destroys the render pass and its framebuffers; call it before the views they were made for go away.
    void Destroy();

    Device* device = nullptr;
    VkRenderPass renderPass = VK_NULL_HANDLE;
    VkFormat format = VK_FORMAT_UNDEFINED;
    unsigned width = 0;
    unsigned height = 0;
    unsigned flags = 0;
    Image const* depth = nullptr;
    VkAttachmentLoadOp loadOp = VK_ATTACHMENT_LOAD_OP_LOAD;

private:
    VkFramebuffer Framebuffer(std::vector<VkImageView> const& views);

    std::map<std::vector<VkImageView>, VkFramebuffer> _framebuffers;
};

}
