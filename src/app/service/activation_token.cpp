#include "app/service/activation_token.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr char TokenVariable[] = "XDG_ACTIVATION_TOKEN";
constexpr qsizetype LongestToken = 512; // some tell of the program and of the time

// The one of Wayland first; compositors take the other one, too.
constexpr std::pair<QLatin1StringView, const char *> Keys[]
    = {{"activation-token"_L1, TokenVariable}, {"desktop-startup-id"_L1, "DESKTOP_STARTUP_ID"}};

bool isToken(const QString &text)
{
    return !text.isEmpty() && text.size() <= LongestToken
        && std::ranges::all_of(text, [](QChar it) { return it > u' ' && it <= u'~'; });
}

} // namespace

QVariantMap ownPlatformData()
{
    QVariantMap data;
    for (const auto &[key, variable] : Keys) {
        const QString token = qEnvironmentVariable(variable);
        if (isToken(token))
            data.insert(key, token);
    }
    return data;
}

void takeUpPlatformData(const QVariantMap &platformData)
{
    qunsetenv(TokenVariable);
    for (const auto &[key, variable] : Keys) {
        const QVariant value = platformData.value(key);
        if (value.typeId() != QMetaType::QString || !isToken(value.toString()))
            continue;
        qputenv(TokenVariable, value.toString().toLatin1());
        return;
    }
}

} // namespace tovel
