#pragma once

#include "pictures/picture_protocol.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QObject>
#include <QProcess>
#include <QTimer>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

namespace tovel {

struct PictureTimes
{
    // For one picture, and for the program to start. A picture that is late has a second chance
    // after all others, because the machine may have been busy.
    std::chrono::milliseconds patience = std::chrono::seconds(2);
    std::chrono::milliseconds startPatience = std::chrono::seconds(10);
    std::chrono::milliseconds idle = std::chrono::seconds(5);
    // After a program that could not be started, or ended before it was any good.
    std::chrono::milliseconds pause = std::chrono::seconds(60);
};

// Pictures that other programs made, decoded by a program that is started when the first is asked
// for and ended some time after the last. A picture that hangs it, kills it or takes it too long
// costs that process and nothing else. Nothing here blocks.
class ForeignPictures final : public QObject
{
public:
    // The picture, null when there is none. Nothing when nobody could be asked, which may be
    // different in a minute.
    using Handler = std::function<void(std::optional<QImage>)>;

    explicit ForeignPictures(const QString &program, QObject *parent = nullptr,
                             const PictureTimes &times = {});
    // Ends the program, without calling any handler.
    ~ForeignPictures() override;

    // The handler is called once, never from within this call, and may ask for other pictures.
    void request(const PictureRequest &request, Handler handler);

private:
    struct Errand
    {
        QByteArray request;
        Handler handler;
        bool isSecondChance = false;
    };

    void proceed();
    void start();
    void take();
    void becomeImpatient();
    void noteEnd();
    void finishFirst(const std::optional<QImage> &picture);

    const PictureTimes m_times;
    std::deque<Errand> m_errands; // the first one may be with the program
    QProcess m_process;
    QTimer m_timer; // for whatever is waited for
    QByteArray m_received;
    bool m_isStarted = false; // until its end was noted
    bool m_isGreeted = false;
    bool m_isAsked = false;
    bool m_isEnding = false;
    QDeadlineTimer m_pause;
};

} // namespace tovel
