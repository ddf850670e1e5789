#include "fuzz.h"
#include "platform/session/kwin/told_texts.h"

using namespace tovel::kwin;

void fuzz(QByteArrayView bytes)
{
    const QString text = QString::fromUtf8(bytes);
    const SupportInformation information = parseSupportInformation(text);
    if (!text.contains(information.version) || information.version.contains(u'\n'))
        qFatal("a version that nobody told");
    if (information.activationShowsDesktop && !text.contains(u"activationDesktopPolicy"))
        qFatal("a policy that nobody told");
    if (toldText(bytes.toByteArray().constData()).contains(QChar::Null))
        qFatal("a text that goes on after its end");
}
