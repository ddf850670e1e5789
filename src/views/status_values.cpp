#include "views/status_values.h"

#include "model/texts.h"
#include "model/tovel_model.h"

namespace tovel {

using namespace Qt::StringLiterals;

std::optional<Desktop> flockDesktop(const TovelModel &model)
{
    const auto id = model.flockDesktopID();
    const Desktop *desktop = id ? desktopWithID(model.desktops(), *id) : nullptr;
    return desktop ? std::optional(*desktop) : std::nullopt;
}

QList<TravelWindow> skippedWindows(const TovelModel &model)
{
    QList<TravelWindow> result;
    for (const TravelWindow &window : model.windows()) {
        if (window.skipReason)
            result.append(window);
    }
    return result;
}

std::optional<QString> statusWarning(const TovelModel &model, const QString &accessAdvice)
{
    QStringList lines;
    if (!model.available())
        lines.append(u"Window controls unavailable."_s);
    else if (!model.trusted())
        lines.append(ModelTexts::accessNeeded());
    else
        lines = model.issues();
    if (!(model.available() && model.trusted()) && !accessAdvice.isEmpty())
        lines.append(accessAdvice);
    if (!model.choicesProblem().isEmpty())
        lines.append(model.choicesProblem());
    return lines.isEmpty() ? std::nullopt : std::optional(lines.join(u'\n'));
}

QString statusHeadline(const TovelModel &model)
{
    if (model.selected().isEmpty())
        return u"Choose apps for your flock."_s;
    if (model.traveling().isEmpty()) {
        return skippedWindows(model).isEmpty() ? u"Open a window in your flock to get started."_s
                                               : u"No movable windows."_s;
    }
    if (const auto desktop = flockDesktop(model))
        return u"Your flock is on "_s + model.name(*desktop) + u'.';
    return u"Your flock is across "_s + QString::number(model.distribution().size())
        + u" desktops."_s;
}

QString statusText(const TovelModel &model, const QString &accessAdvice)
{
    if (model.busy())
        return model.message();
    return statusWarning(model, accessAdvice).value_or(statusHeadline(model));
}

QString skippedLabel(const QList<TravelWindow> &skipped)
{
    if (skipped.size() == 1 && skipped.first().skipReason) {
        const TravelWindow &window = skipped.first();
        return window.appName + u": "_s + window.skipReason->section(u" — "_s, 0, 0);
    }
    return QString::number(skipped.size()) + u" windows won’t move"_s;
}

} // namespace tovel
