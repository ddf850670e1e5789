#include "settings/bundle.h"

#include "platform/regular_file.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 dictionaryLimit = 64 * 1024;

QVariantMap readDictionary(const QString &path)
{
    const QByteArray content = readRegularFile(path, dictionaryLimit).value_or(QByteArray());
    return QJsonDocument::fromJson(content).object().toVariantMap();
}

} // namespace

Bundle::Bundle(const QString &resourceFolder)
    : m_folder(resourceFolder)
    , m_infoDictionary(readDictionary(resourceFolder + u"/Info.json"_s))
{ }

std::optional<QString> Bundle::pathForResource(const QString &name, const QString &type) const
{
    if (name.split(u'/').contains(u".."_s))
        return std::nullopt;
    const QFileInfo file(m_folder + u'/' + name + u'.' + type);
    if (!file.isFile() || !file.isReadable())
        return std::nullopt;
    return file.filePath();
}

QVariant Bundle::objectForInfoDictionaryKey(const QString &key) const
{
    return m_infoDictionary.value(key);
}

const Bundle &mainBundle()
{
    static const Bundle bundle(QCoreApplication::applicationDirPath() + u"/../share/tovel"_s);
    return bundle;
}

} // namespace tovel
