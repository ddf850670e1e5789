#pragma once

#include "model/desktop.h"
#include "model/travel_window.h"

#include <QList>
#include <QString>

#include <optional>

namespace tovel {

class TovelModel;

// The listed desktop that holds the whole flock, if there is one.
std::optional<Desktop> flockDesktop(const TovelModel &model);

// The windows that cannot move, in the model's order.
QList<TravelWindow> skippedWindows(const TovelModel &model);

// What keeps Tovel from acting, with advice on it, or what went wrong.
std::optional<QString> statusWarning(const TovelModel &model, const QString &accessAdvice = {});

// Where the flock is, or what is missing before it can fly.
QString statusHeadline(const TovelModel &model);

// The progress of a migration, else the warning, else the headline.
QString statusText(const TovelModel &model, const QString &accessAdvice = {});

// Label of the button that tells of skipped windows: the one window's application and the head of
// its reason, or how many there are.
QString skippedLabel(const QList<TravelWindow> &skipped);

} // namespace tovel
