#include "platform/session/kwin/told_texts.h"

#include <QtGlobal>

using namespace tovel::kwin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString text = QString::fromUtf8(bytes);
    const SupportInformation information = parseSupportInformation(text);
    if (!text.contains(information.version) || information.version.contains(u'\n'))
        qFatal("a version that nobody told");
    if (information.activationShowsDesktop && !text.contains(u"activationDesktopPolicy"))
        qFatal("a policy that nobody told");
    if (toldText(bytes.constData()).contains(QChar::Null))
        qFatal("a text that goes on after its end");
    return 0;
}
