#include "platform/simulated/simulated_loader.h"

#include "platform/simulated/simulated_state.h"
#include "platform/simulated/simulated_window_server.h"
#include "platform/variants.h"

#include <QByteArrayView>

#include <utility>

namespace tovel {

namespace {

constexpr char frameworkPath[] = "/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight";

// Its address is the framework's handle.
int frameworkHandle = 0;

class MoveOperationClass final : public ObjectClass
{
public:
    explicit MoveOperationClass(const SimulatedState &state)
        : m_state(state)
    { }

    bool instancesRespondToSelector(const QByteArray &selector) const override
    {
        return selector == "initWithWindows:spaceID:"
            && m_state.world.operationClass != SimOperationClass::WithoutInitialiser;
    }

    std::unique_ptr<Object> initWithWindowsSpaceID(const QVariantList &windows,
                                                   std::uint64_t space) const override
    {
        if (m_state.world.operationClass != SimOperationClass::Present)
            return nullptr;
        QList<std::uint32_t> numbers;
        for (const QVariant &item : windows) {
            const auto number = unsignedNumber(item);
            if (!number)
                return nullptr;
            numbers.append(static_cast<std::uint32_t>(*number));
        }
        return std::make_unique<SimMoveOperation>(std::move(numbers), space);
    }

private:
    const SimulatedState &m_state;
};

} // namespace

SimMoveOperation::SimMoveOperation(QList<std::uint32_t> windowNumbers, std::uint64_t spaceID)
    : windows(std::move(windowNumbers))
    , space(spaceID)
{ }

SimulatedLoader::SimulatedLoader(SimulatedState &state)
    : m_state(state)
    , m_moveOperation(std::make_unique<MoveOperationClass>(state))
{ }

SimulatedLoader::~SimulatedLoader() = default;

void *SimulatedLoader::dlopen(const char *path, int)
{
    if (m_state.recording)
        m_state.lookups.append(QStringLiteral("dlopen ") + QString::fromUtf8(path));
    const bool found = m_state.world.frameworkPresent && QByteArrayView(path) == frameworkPath;
    return found ? &frameworkHandle : nullptr;
}

void *SimulatedLoader::dlsym(void *handle, const char *name)
{
    if (m_state.recording)
        m_state.lookups.append(QStringLiteral("dlsym ") + QString::fromUtf8(name));
    const QByteArray symbol(name);
    if (m_state.droppedSymbols.contains(symbol))
        return nullptr;
    if (handle == &frameworkHandle)
        return simulatedwindowserver::frameworkEntry(symbol);
    if (handle == rtldDefault())
        return simulatedwindowserver::processEntry(symbol);
    return nullptr;
}

std::uint32_t SimulatedLoader::_dyld_image_count() const
{
    return static_cast<std::uint32_t>(m_state.images.size());
}

const char *SimulatedLoader::_dyld_get_image_name(std::uint32_t index) const
{
    return index < m_state.images.size() ? m_state.images[index].path.constData() : nullptr;
}

const std::byte *SimulatedLoader::_dyld_get_image_header(std::uint32_t index) const
{
    return index < m_state.images.size() ? m_state.images[index].image.memory().data() : nullptr;
}

std::intptr_t SimulatedLoader::_dyld_get_image_vmaddr_slide(std::uint32_t index) const
{
    return index < m_state.images.size() ? m_state.images[index].image.slide() : 0;
}

std::span<const std::byte> SimulatedLoader::imageMemory(std::uint32_t index) const
{
    return index < m_state.images.size() ? m_state.images[index].image.memory()
                                         : std::span<const std::byte>();
}

const ObjectClass *SimulatedLoader::NSClassFromString(const QByteArray &name) const
{
    if (m_state.recording)
        m_state.lookups.append(QStringLiteral("class ") + QString::fromUtf8(name));
    const bool found = name == "SLSBridgedMoveWindowsToManagedSpaceOperation"
        && m_state.world.operationClass != SimOperationClass::Absent;
    return found ? m_moveOperation.get() : nullptr;
}

} // namespace tovel
