#include "platform/platform.h"

#include <QtGlobal>

namespace tovel {

namespace {

Platform *installed = nullptr;
std::uint64_t generation = 1;

} // namespace

Platform &currentPlatform()
{
    Q_ASSERT(installed);
    return *installed;
}

std::uint64_t platformGeneration() { return generation; }

PlatformInstallation::PlatformInstallation(Platform &platform)
    : m_previous(installed)
{
    installed = &platform;
    ++generation;
}

PlatformInstallation::~PlatformInstallation()
{
    installed = m_previous;
    ++generation;
}

} // namespace tovel
