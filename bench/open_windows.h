#pragma once

#include <QProcess>

// Windows of a separate process, spread over applications Bench0, Bench1 and so on. All are managed
// when the constructor returns, and all are gone when the destructor does.
class OpenWindows
{
public:
    OpenWindows(int count, int applications);
    ~OpenWindows();

private:
    QProcess m_factory;
};
