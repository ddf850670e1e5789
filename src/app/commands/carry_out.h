#pragma once

#include "app/commands/answer.h"
#include "app/commands/request.h"
#include "model/tovel_model.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace tovel {

// What has to be known of the session to answer.
struct Surroundings
{
    QString missingSession{}; // why there is none; empty when there is one
    QStringList limits{}; // what it cannot do, a sentence each
    QString session{}; // its name and version, as far as known
    bool goesOn = true; // whether the process still uses the choices when it has answered
};

// Carries out the request on the current platform and gives the answer. A request that
// stands for nothing, or a move while another one runs, changes nothing and is refused. Progress of
// a move is the model's message while it is busy; stopMigration() ends it early. The request and
// the surroundings are copied; the model is borrowed: if it goes during a move, the answer
// says so.
QCoro::Task<Answer> carryOut(TovelModel &model, Request request, Surroundings surroundings);

} // namespace tovel
