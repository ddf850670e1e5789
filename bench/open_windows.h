#pragma once

#include <QProcess>

#include <cstddef>

// Windows of a separate process, spread over applications Bench0, Bench1 and so on, beside those
// that there are. All are managed when the constructor returns, and all are gone when the
// destructor does.
class OpenWindows
{
public:
    OpenWindows(int count, int applications);
    ~OpenWindows();

private:
    std::size_t m_others;
    QProcess m_factory;
};
