#pragma once

#include "app/self_test/fixture_process.h"

#include <QProcess>
#include <QString>

namespace tovel {

// A fixture process of this program's own executable. Ends with this object at the latest.
class ChildProcess final : public FixtureProcess
{
public:
    // How this program was called: a file path, or a bare name that the shell looked up.
    explicit ChildProcess(const QString &calledAs);
    ~ChildProcess() override;

    bool start() override;
    bool isRunning() const override;
    std::int32_t processIdentifier() const override;
    std::optional<QByteArray> takeLine() override;
    void end() override;

private:
    QProcess m_process;
};

} // namespace tovel
