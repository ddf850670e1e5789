#pragma once

#include "model/tovel_model.h"

#include <QString>

#include <optional>

namespace tovel {

// What a word of a request stands for, or why it stands for nothing.
template <typename Record>
struct Found
{
    std::optional<Record> record;
    QString error;
};

// By number, then by the name shown, exactly, then without regard to case.
Found<Desktop> findDesktop(const TovelModel &model, const QString &word);

// By bundle identifier, then by name, each exactly, then without regard to case; among the
// applications that run and the flock. An application that does not run is found by the bundle
// identifier that it is installed with.
Found<RunningApp> findApplication(const TovelModel &model, const QString &word);

} // namespace tovel
