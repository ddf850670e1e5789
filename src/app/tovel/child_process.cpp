#include "app/tovel/child_process.h"

#include <QCoreApplication>

#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 3000; // milliseconds

} // namespace

ChildProcess::ChildProcess(const QString &calledAs)
{
    m_process.setProgram(calledAs.contains(u'/') ? calledAs
                                                 : QCoreApplication::applicationFilePath());
    m_process.setArguments({u"--fixture"_s});
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The child never ends by itself, and this process may end without a chance to end it.
    m_process.setChildProcessModifier([parent = getpid()] {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(1);
    });
}

ChildProcess::~ChildProcess() { end(); }

bool ChildProcess::start()
{
    m_process.start(QIODevice::ReadOnly);
    return m_process.waitForStarted(patience);
}

bool ChildProcess::isRunning() const { return m_process.state() == QProcess::Running; }

std::int32_t ChildProcess::processIdentifier() const
{
    return static_cast<std::int32_t>(m_process.processId());
}

std::optional<QByteArray> ChildProcess::takeLine()
{
    if (!m_process.canReadLine())
        return std::nullopt;
    QByteArray line = m_process.readLine();
    line.chop(1);
    return line;
}

void ChildProcess::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (m_process.waitForFinished(patience))
        return;
    m_process.kill();
    m_process.waitForFinished(patience);
}

} // namespace tovel
