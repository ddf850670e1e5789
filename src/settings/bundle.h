#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace tovel {

// The files and facts that come with the program (NSBundle): one folder of resources, and in it the
// information dictionary, a JSON object in the file "Info.json".
class Bundle final
{
public:
    // Reads the information dictionary at once. A dictionary that is missing or is no JSON object
    // is empty.
    explicit Bundle(const QString &resourceFolder);

    // Path of an existing readable file "name.type"; absent when there is none. The name may start
    // with folders, but cannot leave the bundle.
    std::optional<QString> pathForResource(const QString &name, const QString &type) const;

    // Invalid when the dictionary has no such key.
    QVariant objectForInfoDictionaryKey(const QString &key) const;

private:
    QString m_folder;
    QVariantMap m_infoDictionary;
};

// The bundle of the running program: "../share/tovel" from where the program's file stands, which
// holds in a build tree and where it is installed. To be asked after the QCoreApplication was made.
const Bundle &mainBundle();

} // namespace tovel
