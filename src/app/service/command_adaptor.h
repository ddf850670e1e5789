#pragma once

#include "app/commands/carry_out.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace tovel {

// What tovelctl(1) does, on the model of the running program, for other programs. Each method
// answers by the JSON object of that manual page, compact; its field "status" tells how it ended.
class CommandAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tovel.Tovel1")
    Q_PROPERTY(QString Display READ display)
    Q_PROPERTY(bool Busy READ isBusy)

public:
    // For an object that is registered on the bus.
    CommandAdaptor(QObject *parent, const QDBusConnection &bus);

    // What requests are carried out on from now on; before, they are refused. To be called once.
    void serve(TovelModel &model, std::function<Surroundings()> surroundings);

    QString display() const; // the X display served, without its screen; empty: none
    bool isBusy() const { return m_model && m_model->busy(); } // whether a move runs

public Q_SLOTS:
    QString Status();
    QString Apps();
    // All or none, by bundle identifier or name.
    QString AddToFlock(const QStringList &applications);
    QString RemoveFromFlock(const QStringList &applications);
    QString Rename(const QString &desktop, const QString &name);
    // Answers at the end of the move; meanwhile there are Progress signals. The options
    // are "follow", a boolean for this move alone, and "new", a boolean: whether the desktop is to
    // be made. The error org.tovel.Tovel1.Error.Busy when another
    // move runs, InvalidArgs for other options.
    QString Move(const QString &desktop, const QVariantMap &options, const QDBusMessage &message);
    // Ends the running move after its window; nothing when none runs.
    void StopMove();

Q_SIGNALS:
    // Of any move that runs, whoever asked for it: what is being done, and last the summary.
    void Progress(const QString &message);

private:
    QString answer(Request request);
    QCoro::Task<Answer> carry(Request request);
    QCoro::Task<> answerLater(Request request, QDBusMessage message);

    QDBusConnection m_bus;
    QPointer<TovelModel> m_model;
    std::function<Surroundings()> m_surroundings;
};

} // namespace tovel
