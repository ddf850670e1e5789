#include "pictures/foreign_pictures.h"

#include <utility>

namespace tovel {

namespace {

constexpr int endPatience = 1000; // milliseconds

QImage imageFrom(const PictureAnswer &answer)
{
    if (answer.width == 0)
        return {};
    const auto width = static_cast<int>(answer.width);
    const QImage view(reinterpret_cast<const uchar *>(answer.pixels.constData()), width,
                      static_cast<int>(answer.height), 4 * width,
                      QImage::Format_RGBA8888_Premultiplied);
    // A copy, in the format that is painted fastest.
    return view.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

ForeignPictures::ForeignPictures(const QString &program, QObject *parent, const PictureTimes &times)
    : QObject(parent)
    , m_times(times)
    , m_process(this)
    , m_timer(this)
{
    m_process.setProgram(program);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ForeignPictures::becomeImpatient);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ForeignPictures::take);
    // Queued, for a start that fails may tell so from within.
    connect(
        &m_process, &QProcess::stateChanged, this,
        [this](QProcess::ProcessState state) {
            if (state == QProcess::NotRunning)
                noteEnd();
        },
        Qt::QueuedConnection);
}

ForeignPictures::~ForeignPictures()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished(endPatience);
}

void ForeignPictures::request(const PictureRequest &request, Handler handler)
{
    m_errands.push_back({encodeRequest(request).value_or(QByteArray()), std::move(handler)});
    QMetaObject::invokeMethod(this, &ForeignPictures::proceed, Qt::QueuedConnection);
}

void ForeignPictures::proceed()
{
    if (m_isAsked || m_isEnding)
        return;
    while (!m_errands.empty() && m_errands.front().request.isEmpty())
        finishFirst(QImage());
    if (!m_isStarted) {
        if (!m_errands.empty())
            start();
    } else if (m_isGreeted && m_errands.empty()) {
        m_timer.start(m_times.idle);
    } else if (m_isGreeted) {
        m_isAsked = true;
        m_process.write(m_errands.front().request);
        m_timer.start(m_times.patience);
    }
}

void ForeignPictures::start()
{
    if (!m_pause.hasExpired()) {
        // Those alone that are there now: a handler may ask again.
        for (std::size_t count = m_errands.size(); count > 0; --count)
            finishFirst(std::nullopt);
        return;
    }
    m_received.clear();
    m_isStarted = true;
    m_timer.start(m_times.startPatience);
    m_process.start();
}

void ForeignPictures::take()
{
    m_received += m_process.readAllStandardOutput();
    if (!m_isGreeted && m_received.size() >= pictureGreeting.size()) {
        m_isGreeted = m_received.startsWith(pictureGreeting);
        m_received.remove(0, pictureGreeting.size());
        if (!m_isGreeted)
            m_process.kill();
        proceed();
    }
    if (!m_isGreeted || m_received.isEmpty())
        return;
    const auto answer = receiveAnswer(m_received);
    const bool isExpected = m_isAsked && answer.length >= m_received.size();
    if (answer.damaged || (answer.message && !isExpected) || !m_isAsked) {
        m_process.kill();
    } else if (answer.message) {
        m_received.clear();
        m_isAsked = false;
        finishFirst(imageFrom(*answer.message));
        proceed();
    }
}

void ForeignPictures::becomeImpatient()
{
    if (m_isGreeted && !m_isAsked && !m_isEnding) {
        m_isEnding = true;
        m_process.closeWriteChannel();
        m_timer.start(m_times.patience);
    } else {
        m_process.kill();
    }
}

void ForeignPictures::noteEnd()
{
    m_timer.stop();
    m_isEnding = false;
    if (!m_isGreeted)
        m_pause.setRemainingTime(m_times.pause);
    if (std::exchange(m_isAsked, false)) {
        if (m_errands.front().isSecondChance) {
            finishFirst(QImage());
        } else {
            m_errands.push_back(std::move(m_errands.front()));
            m_errands.pop_front();
            m_errands.back().isSecondChance = true;
        }
    }
    m_isGreeted = false;
    m_isStarted = false;
    proceed();
}

void ForeignPictures::finishFirst(const std::optional<QImage> &picture)
{
    const Handler handler = std::move(m_errands.front().handler);
    m_errands.pop_front();
    handler(picture);
}

} // namespace tovel
