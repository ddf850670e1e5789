#include "views/model_watch.h"

#include "model/tovel_model.h"

#include <utility>

namespace tovel {

ModelWatch::ModelWatch(TovelModel &model, std::function<void()> redraw, QObject *parent)
    : QObject(parent)
    , m_redraw(std::move(redraw))
{
    connect(&model, &TovelModel::didChange, this, &ModelWatch::schedule);
}

void ModelWatch::schedule()
{
    if (std::exchange(m_scheduled, true))
        return;
    const auto redraw = [this] {
        m_scheduled = false;
        m_redraw();
    };
    QMetaObject::invokeMethod(this, redraw, Qt::QueuedConnection);
}

} // namespace tovel
