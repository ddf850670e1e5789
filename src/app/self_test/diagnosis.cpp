#include "app/self_test/self_test.h"

#include "bridge/bridge.h"
#include "model/tovel_model.h"
#include "platform/accessibility.h"
#include "platform/platform.h"
#include "platform/variants.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

void describeDisplay(const QVariant &display, QTextStream &out)
{
    const QVariantMap entries = dictionary(display).value_or(QVariantMap());
    const QVariantList spaces = array(entries.value(u"Spaces"_s)).value_or(QVariantList());
    const auto regular = std::count_if(spaces.cbegin(), spaces.cend(), [](const QVariant &space) {
        const QVariantMap facts = dictionary(space).value_or(QVariantMap());
        return signedNumber(facts.value(u"type"_s)) == 0;
    });
    out << regular << " regular desktops, " << spaces.size() - regular << " full-screen spaces"
        << Qt::endl;
}

void describeFlock(Platform &platform, QTextStream &out)
{
    const TovelModel model(platform);
    const QList<TravelWindow> &windows = model.windows();
    const auto staysBehind
        = [](const TravelWindow &window) { return window.skipReason.has_value(); };
    out << "Selected windows: " << windows.size()
        << "; skipped: " << std::count_if(windows.cbegin(), windows.cend(), staysBehind)
        << Qt::endl;
    for (const TravelWindow &window : windows) {
        if (staysBehind(window))
            out << window.appName << ": " << *window.skipReason << Qt::endl;
    }
}

} // namespace

int diagnose(const SelfTestSetting &setting)
{
    QTextStream &out = setting.out;
    const bool available = TAvailable();
    const bool trusted = setting.platform.accessibility().AXIsProcessTrusted();
    const QVariantList displays = TDisplays();

    out << "Private window APIs: " << (available ? "available" : "missing") << Qt::endl;
    out << "Accessibility: " << (trusted ? "allowed" : "not yet allowed") << Qt::endl;
    out << "Displays: " << displays.size() << Qt::endl;
    for (qsizetype i = 0; i < displays.size(); ++i) {
        out << "Display " << i + 1 << ": ";
        describeDisplay(displays.at(i), out);
    }
    if (trusted)
        describeFlock(setting.platform, out);
    if (!setting.session.isEmpty())
        out << "Session: " << setting.session << Qt::endl;
    return available && !displays.isEmpty() ? SelfTestPassed : SelfTestFailed;
}

} // namespace tovel
