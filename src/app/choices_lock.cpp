#include "app/choices_lock.h"

#include "platform/linux/linux_user_defaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr std::chrono::seconds Patience{5};
constexpr std::chrono::milliseconds RetryInterval{5};

} // namespace

ChoicesLock::ChoicesLock()
{
    const QString path = LinuxUserDefaults::filePath(QStringLiteral("choices.lock"));
    QDir().mkpath(QFileInfo(path).path());
    m_file = open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK,
                  S_IRUSR | S_IWUSR);
    const auto deadline = std::chrono::steady_clock::now() + Patience;
    while (m_file >= 0 && flock(m_file, LOCK_EX | LOCK_NB) != 0
           && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(RetryInterval);
}

ChoicesLock::~ChoicesLock()
{
    if (m_file >= 0)
        close(m_file);
}

} // namespace tovel
