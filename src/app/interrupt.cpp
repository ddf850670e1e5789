#include "app/interrupt.h"

#include <QSocketNotifier>

#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr long long Patience = 500'000'000; // nanoseconds

volatile int writeEnd = -1;
volatile std::sig_atomic_t hasArrived = 0;
timespec firstArrival{};

// Async-signal-safe calls and nothing else.
void onSignal(int number)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (hasArrived) {
        const long long waited = (now.tv_sec - firstArrival.tv_sec) * 1'000'000'000LL
            + (now.tv_nsec - firstArrival.tv_nsec);
        if (waited >= Patience) {
            signal(number, SIG_DFL);
            raise(number);
        }
        return;
    }
    hasArrived = 1;
    firstArrival = now;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
}

void install(int number)
{
    struct sigaction action
    {
    };
    struct sigaction before
    {
    };
    // Whoever started the program with the signal ignored wants it to go on.
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN)
        return;
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

Interrupt::Interrupt(std::function<void(int)> handler)
    : m_handler(std::move(handler))
{
    hasArrived = 0;
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    writeEnd = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { arrived(); });
    install(SIGINT);
    install(SIGTERM);
    install(SIGHUP);
}

Interrupt::~Interrupt()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
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
