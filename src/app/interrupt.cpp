#include "app/interrupt.h"

#include <QSocketNotifier>

#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr long long Patience = 500'000'000; // nanoseconds
constexpr int Numbers[] = {SIGINT, SIGTERM, SIGHUP};
constexpr unsigned LongestHang = 3; // seconds

volatile int writeEnd = -1;
volatile std::sig_atomic_t hasArrived = 0; // the first one's number
timespec firstArrival{};

// Async-signal-safe calls and nothing else, here and in what follows.
void endBy(int number)
{
    signal(number, SIG_DFL);
    raise(number);
}

void onAlarm(int)
{
    if (hasArrived)
        endBy(hasArrived);
}

void onSignal(int number)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (hasArrived) {
        const long long waited = (now.tv_sec - firstArrival.tv_sec) * 1'000'000'000LL
            + (now.tv_nsec - firstArrival.tv_nsec);
        if (waited >= Patience)
            endBy(number);
        return;
    }
    hasArrived = number;
    firstArrival = now;
    alarm(LongestHang);
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
}

void install(int number, void (*handler)(int))
{
    struct sigaction action
    {
    };
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

bool isIgnored(int number)
{
    struct sigaction before
    {
    };
    return sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
}

} // namespace

Interrupt::Interrupt(std::function<void(int)> handler, Deadline deadline)
    : m_handler(std::move(handler))
    , m_deadline(deadline)
{
    alarm(0);
    hasArrived = 0;
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    writeEnd = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { arrived(); });
    install(SIGALRM, onAlarm);
    for (const int number : Numbers) {
        // Whoever started the program with the signal ignored wants it to go on.
        if (isIgnored(number))
            continue;
        install(number, onSignal);
        m_caught.append(number);
    }
}

Interrupt::~Interrupt()
{
    for (const int number : std::as_const(m_caught))
        std::signal(number, SIG_DFL);
    if (m_deadline == Deadline::Call)
        alarm(0);
    m_notifier.reset();
    for (const int end : m_pipe) {
        if (end >= 0)
            close(end);
    }
    writeEnd = -1;
}

void Interrupt::arrived()
{
    if (m_deadline == Deadline::Call)
        alarm(0);
    unsigned char number = 0;
    while (read(m_pipe[0], &number, 1) == 1)
        m_handler(number);
}

} // namespace tovel
