#pragma once

#include "platform/dynamic_loader.h"

#include <QList>

#include <cstdint>

namespace tovel {

struct SimulatedState;

// An instance of the class "SLSBridgedMoveWindowsToManagedSpaceOperation".
class SimMoveOperation final : public Object
{
public:
    SimMoveOperation(QList<std::uint32_t> windowNumbers, std::uint64_t spaceID);

    const QList<std::uint32_t> windows;
    const std::uint64_t space;
};

class SimulatedLoader final : public DynamicLoader
{
public:
    explicit SimulatedLoader(SimulatedState &state);
    ~SimulatedLoader() override;

    void *dlopen(const char *path, int mode) override;
    void *dlsym(void *handle, const char *name) override;
    std::uint32_t _dyld_image_count() const override;
    const char *_dyld_get_image_name(std::uint32_t index) const override;
    const std::byte *_dyld_get_image_header(std::uint32_t index) const override;
    std::intptr_t _dyld_get_image_vmaddr_slide(std::uint32_t index) const override;
    std::span<const std::byte> imageMemory(std::uint32_t index) const override;
    const ObjectClass *NSClassFromString(const QByteArray &name) const override;

private:
    SimulatedState &m_state;
    std::unique_ptr<ObjectClass> m_moveOperation;
};

} // namespace tovel
