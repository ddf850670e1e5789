#include "app/tovelctl/interrupt.h"

#include <QSocketNotifier>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace tovel {

namespace {

volatile int writeEnd = -1;

// Async-signal-safe: write() and nothing else.
void onSignal(int number)
{
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
}

void install(int number)
{
    struct sigaction action
    {
    };
    action.sa_handler = onSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

Interrupt::Interrupt(std::function<void(int)> handler)
    : m_handler(std::move(handler))
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    writeEnd = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { arrived(); });
    install(SIGINT);
    install(SIGTERM);
}

Interrupt::~Interrupt()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    m_notifier.reset();
    for (const int end : m_pipe) {
        if (end >= 0)
            close(end);
    }
    writeEnd = -1;
}

void Interrupt::arrived()
{
    unsigned char number = 0;
    while (read(m_pipe[0], &number, 1) == 1)
        m_handler(number);
}

} // namespace tovel
