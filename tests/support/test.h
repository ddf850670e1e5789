#pragma once

// What nearly every test uses.

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace tovel { }

using namespace tovel;
using namespace Qt::StringLiterals;
