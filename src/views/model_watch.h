#pragma once

#include <QObject>

#include <functional>

namespace tovel {

class TovelModel;

// Calls back once, from the event loop, after any number of changes of the model or of whatever
// else asks for it.
class ModelWatch final : public QObject
{
    Q_OBJECT

public:
    // Borrows the model; the callback ends with this object.
    ModelWatch(TovelModel &model, std::function<void()> redraw, QObject *parent);

    void schedule();

private:
    std::function<void()> m_redraw;
    bool m_scheduled = false;
};

} // namespace tovel
