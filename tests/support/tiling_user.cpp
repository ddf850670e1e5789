#include "support/tiling_user.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

void collect(const QJsonObject &node, QString output, QString workspace, QList<QJsonObject> &found)
{
    const QString type = node["type"_L1].toString();
    if (type == u"output")
        output = node["name"_L1].toString();
    if (type == u"workspace")
        workspace = node["name"_L1].toString();
    if (node["window"_L1].isDouble() || node["app_id"_L1].isString()) {
        QJsonObject window = node;
        window["workspace"_L1] = workspace;
        window["output"_L1] = output;
        found.append(window);
    }
    for (const auto &list : {"nodes"_L1, "floating_nodes"_L1}) {
        for (const QJsonValue &child : node[list].toArray())
            collect(child.toObject(), output, workspace, found);
    }
}

} // namespace

QByteArray TilingUser::ask(const QStringList &arguments) const
{
    const bool isSway = m_session.environment().contains(u"SWAYSOCK"_s);
    return m_session.run(isSway ? u"swaymsg"_s : u"i3-msg"_s, arguments).out.toUtf8();
}

bool TilingUser::command(const QString &text) const
{
    const QByteArray answer = ask({u"--"_s, text});
    return answer.contains("\"success\"") && !answer.contains("false");
}

QList<QJsonObject> TilingUser::windows() const
{
    QList<QJsonObject> found;
    collect(QJsonDocument::fromJson(ask({u"-t"_s, u"get_tree"_s})).object(), {}, {}, found);
    return found;
}

QJsonObject TilingUser::windowTitled(const QString &title) const
{
    for (const QJsonObject &window : windows()) {
        if (window["name"_L1] == title)
            return window;
    }
    return {};
}

} // namespace tovel
