#include "open_windows.h"

#include "bare_read.h"

#include <chrono>
#include <thread>

namespace {

void waitForCount(std::size_t count)
{
    using Clock = std::chrono::steady_clock;
    BareReader reader;
    const auto deadline = Clock::now() + std::chrono::seconds(60);
    while (reader.read() != count) {
        if (Clock::now() > deadline)
            qFatal("the window manager did not take over the windows");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

} // namespace

OpenWindows::OpenWindows(int count, int applications)
    : m_others(BareReader().read())
{
    m_factory.start(QString::fromUtf8(WINDOW_FACTORY),
                    {QString::number(count), QString::number(applications)});
    waitForCount(m_others + static_cast<std::size_t>(count));
}

OpenWindows::~OpenWindows()
{
    m_factory.closeWriteChannel();
    m_factory.waitForFinished();
    waitForCount(m_others);
}
