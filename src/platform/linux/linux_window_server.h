#pragma once

#include "platform/dynamic_loader.h"
#include "platform/linux/applications/session_applications.h"
#include "platform/linux/linux_accessibility.h"

#include <cstdint>
#include <optional>

namespace tovel {

// Publishes the private window-server entry points over a desktop session. There is no submit
// function and no image to find it in, so windows move by the tag and the window list alone; and
// there are no remote elements, because accessibility yields every window.
class LinuxWindowServer final : public DynamicLoader
{
public:
    // Borrows; null where there is no session, and every look-up then answers null.
    LinuxWindowServer(SessionApplications *applications, LinuxAccessibility &accessibility);
    ~LinuxWindowServer() override;

    void *dlopen(const char *path, int mode) override;
    void *dlsym(void *handle, const char *name) override;
    std::uint32_t _dyld_image_count() const override { return 0; }
    const char *_dyld_get_image_name(std::uint32_t) const override { return nullptr; }
    const std::byte *_dyld_get_image_header(std::uint32_t) const override { return nullptr; }
    std::intptr_t _dyld_get_image_vmaddr_slide(std::uint32_t) const override { return 0; }
    std::span<const std::byte> imageMemory(std::uint32_t) const override { return {}; }
    const ObjectClass *NSClassFromString(const QByteArray &) const override { return nullptr; }

private:
    friend struct LinuxEntryPoints;

    struct Tag
    {
        std::uint32_t value = 0;
        std::uint64_t space = 0;
    };

    SessionApplications *m_applications;
    LinuxAccessibility &m_accessibility;
    std::optional<Tag> m_tag;
};

} // namespace tovel
