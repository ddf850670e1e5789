#pragma once

#include "app/commands/answer.h"
#include "model/tovel_model.h"

// What answers hold, of the model as it is.
namespace tovel {

DesktopInfo desktopInfo(const TovelModel &model, const Desktop &desktop);

StatusContent statusContent(const TovelModel &model, const QStringList &limits);
AppsContent appsContent(const TovelModel &model);
FlockContent flockContent(const TovelModel &model);

// Of the latest migration, which went to the target and met no obstacle that would have to be told.
MoveContent moveContent(const TovelModel &model, const Desktop &target);

} // namespace tovel
