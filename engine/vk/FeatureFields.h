#pragma once

// Internal to PhysicalDevice.cpp: the VkBool32 fields of every feature block of PhysicalDevice::Features, in the
// order the Vulkan headers declare them, so that the blocks can be walked as arrays and their fields named.
// Taken from vulkan_core.h (header version 239); PhysicalDevice.cpp checks each list against the struct's layout.

#define QUORL_VK_FEATURES_FIELDS(X) \
    X(robustBufferAccess) X(fullDrawIndexUint32) X(imageCubeArray) X(independentBlend) X(geometryShader) \
    X(tessellationShader) X(sampleRateShading) X(dualSrcBlend) X(logicOp) X(multiDrawIndirect) \
    X(drawIndirectFirstInstance) X(depthClamp) X(depthBiasClamp) X(fillModeNonSolid) X(depthBounds) X(wideLines) \
    X(largePoints) X(alphaToOne) X(multiViewport) X(samplerAnisotropy) X(textureCompressionETC2) \
    X(textureCompressionASTC_LDR) X(textureCompressionBC) X(occlusionQueryPrecise) X(pipelineStatisticsQuery) \
    X(vertexPipelineStoresAndAtomics) X(fragmentStoresAndAtomics) X(shaderTessellationAndGeometryPointSize) \
    X(shaderImageGatherExtended) X(shaderStorageImageExtendedFormats) X(shaderStorageImageMultisample) \
    X(shaderStorageImageReadWithoutFormat) X(shaderStorageImageWriteWithoutFormat) \
    X(shaderUniformBufferArrayDynamicIndexing) X(shaderSampledImageArrayDynamicIndexing) \
    X(shaderStorageBufferArrayDynamicIndexing) X(shaderStorageImageArrayDynamicIndexing) X(shaderClipDistance) \
    X(shaderCullDistance) X(shaderFloat64) X(shaderInt64) X(shaderInt16) X(shaderResourceResidency) \
    X(shaderResourceMinLod) X(sparseBinding) X(sparseResidencyBuffer) X(sparseResidencyImage2D) \
    X(sparseResidencyImage3D) X(sparseResidency2Samples) X(sparseResidency4Samples) X(sparseResidency8Samples) \
    X(sparseResidency16Samples) X(sparseResidencyAliased) X(variableMultisampleRate) X(inheritedQueries)

#define QUORL_VK_SHADER_CLOCK_FIELDS(X) \
    X(shaderSubgroupClock) X(shaderDeviceClock)

#define QUORL_VK_STORAGE_16BIT_FIELDS(X) \
    X(storageBuffer16BitAccess) X(uniformAndStorageBuffer16BitAccess) X(storagePushConstant16) \
    X(storageInputOutput16)

#define QUORL_VK_VULKAN12_FIELDS(X) \
    X(samplerMirrorClampToEdge) X(drawIndirectCount) X(storageBuffer8BitAccess) X(uniformAndStorageBuffer8BitAccess) \
    X(storagePushConstant8) X(shaderBufferInt64Atomics) X(shaderSharedInt64Atomics) X(shaderFloat16) X(shaderInt8) \
    X(descriptorIndexing) X(shaderInputAttachmentArrayDynamicIndexing) \
    X(shaderUniformTexelBufferArrayDynamicIndexing) X(shaderStorageTexelBufferArrayDynamicIndexing) \
    X(shaderUniformBufferArrayNonUniformIndexing) X(shaderSampledImageArrayNonUniformIndexing) \
    X(shaderStorageBufferArrayNonUniformIndexing) X(shaderStorageImageArrayNonUniformIndexing) \
    X(shaderInputAttachmentArrayNonUniformIndexing) X(shaderUniformTexelBufferArrayNonUniformIndexing) \
    X(shaderStorageTexelBufferArrayNonUniformIndexing) X(descriptorBindingUniformBufferUpdateAfterBind) \
    X(descriptorBindingSampledImageUpdateAfterBind) X(descriptorBindingStorageImageUpdateAfterBind) \
    X(descriptorBindingStorageBufferUpdateAfterBind) X(descriptorBindingUniformTexelBufferUpdateAfterBind) \
    X(descriptorBindingStorageTexelBufferUpdateAfterBind) X(descriptorBindingUpdateUnusedWhilePending) \
    X(descriptorBindingPartiallyBound) X(descriptorBindingVariableDescriptorCount) X(runtimeDescriptorArray) \
    X(samplerFilterMinmax) X(scalarBlockLayout) X(imagelessFramebuffer) X(uniformBufferStandardLayout) \
    X(shaderSubgroupExtendedTypes) X(separateDepthStencilLayouts) X(hostQueryReset) X(timelineSemaphore) \
    X(bufferDeviceAddress) X(bufferDeviceAddressCaptureReplay) X(bufferDeviceAddressMultiDevice) \
    X(vulkanMemoryModel) X(vulkanMemoryModelDeviceScope) X(vulkanMemoryModelAvailabilityVisibilityChains) \
    X(shaderOutputViewportIndex) X(shaderOutputLayer) X(subgroupBroadcastDynamicId)

#define QUORL_VK_RAY_TRACING_PIPELINE_FIELDS(X) \
    X(rayTracingPipeline) X(rayTracingPipelineShaderGroupHandleCaptureReplay) \
    X(rayTracingPipelineShaderGroupHandleCaptureReplayMixed) X(rayTracingPipelineTraceRaysIndirect) \
    X(rayTraversalPrimitiveCulling)

#define QUORL_VK_ACCELERATION_STRUCTURE_FIELDS(X) \
    X(accelerationStructure) X(accelerationStructureCaptureReplay) X(accelerationStructureIndirectBuild) \
    X(accelerationStructureHostCommands) X(descriptorBindingAccelerationStructureUpdateAfterBind)

#define QUORL_VK_RAY_QUERY_FIELDS(X) \
    X(rayQuery)

#define QUORL_VK_SHADER_ATOMIC_FLOAT_FIELDS(X) \
    X(shaderBufferFloat32Atomics) X(shaderBufferFloat32AtomicAdd) X(shaderBufferFloat64Atomics) \
    X(shaderBufferFloat64AtomicAdd) X(shaderSharedFloat32Atomics) X(shaderSharedFloat32AtomicAdd) \
    X(shaderSharedFloat64Atomics) X(shaderSharedFloat64AtomicAdd) X(shaderImageFloat32Atomics) \
    X(shaderImageFloat32AtomicAdd) X(sparseImageFloat32Atomics) X(sparseImageFloat32AtomicAdd)

#define QUORL_VK_SHADER_ATOMIC_FLOAT2_FIELDS(X) \
    X(shaderBufferFloat16Atomics) X(shaderBufferFloat16AtomicAdd) X(shaderBufferFloat16AtomicMinMax) \
    X(shaderBufferFloat32AtomicMinMax) X(shaderBufferFloat64AtomicMinMax) X(shaderSharedFloat16Atomics) \
    X(shaderSharedFloat16AtomicAdd) X(shaderSharedFloat16AtomicMinMax) X(shaderSharedFloat32AtomicMinMax) \
    X(shaderSharedFloat64AtomicMinMax) X(shaderImageFloat32AtomicMinMax) X(sparseImageFloat32AtomicMinMax)

#define QUORL_VK_VULKAN13_FIELDS(X) \
    X(robustImageAccess) X(inlineUniformBlock) X(descriptorBindingInlineUniformBlockUpdateAfterBind) \
    X(pipelineCreationCacheControl) X(privateData) X(shaderDemoteToHelperInvocation) X(shaderTerminateInvocation) \
    X(subgroupSizeControl) X(computeFullSubgroups) X(synchronization2) X(textureCompressionASTC_HDR) \
    X(shaderZeroInitializeWorkgroupMemory) X(dynamicRendering) X(shaderIntegerDotProduct) X(maintenance4)
