#include "bridge/binding.h"

#include "bridge/bridge.h"
#include "bridge/symbol_table.h"
#include "platform/dynamic_loader.h"
#include "platform/platform.h"

#include <mutex>
#include <vector>

namespace tovel {

namespace {

constexpr char frameworkPath[] = "/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight";
constexpr char frameworkPart[] = "/SkyLight.framework/";
constexpr char submitSymbol[] = "__ZL54SLSPerformAsynchronousBridgedWindowManagementOperation"
                                "P47SLSAsynchronousBridgedWindowManagementOperation";

template <typename Function>
void lookUp(Function &entry, DynamicLoader &loader, void *handle, const char *name)
{
    entry = reinterpret_cast<Function>(loader.dlsym(handle, name));
}

std::vector<Image> loadedImages(const DynamicLoader &loader)
{
    std::vector<Image> images;
    const std::uint32_t count = loader._dyld_image_count();
    for (std::uint32_t i = 0; i < count; ++i) {
        Image image;
        if (const char *name = loader._dyld_get_image_name(i))
            image.name = name;
        image.memory = loader.imageMemory(i);
        image.memoryAddress = reinterpret_cast<std::uintptr_t>(image.memory.data());
        image.headerAddress = reinterpret_cast<std::uintptr_t>(loader._dyld_get_image_header(i));
        image.slide = loader._dyld_get_image_vmaddr_slide(i);
        images.push_back(image);
    }
    return images;
}

Binding bindEverything(DynamicLoader &loader)
{
    Binding binding;
    binding.sky = loader.dlopen(frameworkPath, DynamicLoader::RtldLazy);
    lookUp(binding.connection, loader, binding.sky, "SLSMainConnectionID");
    lookUp(binding.displays, loader, binding.sky, "SLSCopyManagedDisplaySpaces");
    lookUp(binding.spaces, loader, binding.sky, "SLSCopySpacesForWindows");
    lookUp(binding.compat, loader, binding.sky, "SLSSpaceSetCompatID");
    lookUp(binding.workspace, loader, binding.sky, "SLSSetWindowListWorkspace");
    lookUp(binding.isOrderedIn, loader, binding.sky, "SLSWindowIsOrderedIn");
    lookUp(binding.windowsWithTags, loader, binding.sky, "SLSCopyWindowsWithOptionsAndTags");
    lookUp(binding.windowID, loader, DynamicLoader::rtldDefault(), "_AXUIElementGetWindow");

    const auto address = findLocalSymbol(loadedImages(loader), frameworkPart, submitSymbol);
    if (address)
        binding.submitMove
            = reinterpret_cast<windowserver::SubmitMove>(static_cast<std::uintptr_t>(*address));
    return binding;
}

} // namespace

Binding load()
{
    static std::mutex mutex;
    static Binding binding;
    static std::uint64_t boundGeneration = 0;

    const std::lock_guard lock(mutex);
    if (boundGeneration != platformGeneration()) {
        binding = bindEverything(currentPlatform().loader());
        boundGeneration = platformGeneration();
    }
    return binding;
}

bool TAvailable() { return load().canMove(); }

} // namespace tovel
