#include "support/panel_user.h"

#include "support/stored_choices.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 10000; // milliseconds for an answer

void collect(const QJsonObject &node, const QString &group, QList<SeenObject> &into)
{
    SeenObject seen;
    seen.name = node[u"name"_s].toString();
    seen.role = node[u"role"_s].toString();
    seen.description = node[u"description"_s].toString();
    seen.text = node[u"text"_s].toString();
    seen.group = group;
    for (const QJsonValue &state : node[u"states"_s].toArray())
        seen.states.append(state.toString());
    const QJsonArray place = node[u"place"_s].toArray();
    seen.place = QRect(place[0].toInt(), place[1].toInt(), place[2].toInt(), place[3].toInt());
    into.append(seen);
    for (const QJsonValue &child : node[u"children"_s].toArray())
        collect(child.toObject(), seen.name.isEmpty() ? group : seen.name, into);
}

std::optional<SeenObject> pick(const QList<SeenObject> &all, const QString &name,
                               const QString &role)
{
    const auto found = std::find_if(all.cbegin(), all.cend(), [&](const SeenObject &seen) {
        return seen.name == name && (role.isEmpty() || seen.role == role);
    });
    return found == all.cend() ? std::nullopt : std::optional(*found);
}

} // namespace

PanelUser::PanelUser(PrivateSession &session, Hands hands)
    : m_session(session)
    , m_hands(std::move(hands))
    , m_reader(session.launch(u"/usr/bin/python3"_s,
                              {QStringLiteral(TOVEL_ACCESSIBLE_TREE), u"org.tovel.Tovel"_s},
                              session.environment(), Input::Open))
{ }

PanelUser::~PanelUser()
{
    stop();
    m_reader->kill();
    m_reader->waitForFinished();
}

bool PanelUser::start(const QProcessEnvironment &changes)
{
    stop();
    QProcessEnvironment environment = m_session.environment();
    environment.insert(changes);
    m_program = m_session.launch(QStringLiteral(TOVEL), {}, environment);
    return eventually([this] { return isActive(); });
}

bool PanelUser::isRunning() const { return m_program && m_program->state() == QProcess::Running; }

bool PanelUser::isActive()
{
    const auto panel = pick(look(), u"Tovel"_s, u"frame"_s);
    return panel && panel->is("active"_L1);
}

bool PanelUser::isShown() { return pick(look(), u"Tovel"_s, u"frame"_s).has_value(); }

void PanelUser::stop()
{
    if (!isRunning())
        return;
    m_program->terminate();
    if (!m_program->waitForFinished(Patience))
        m_program->kill();
    m_program->waitForFinished();
}

Outcome PanelUser::outcome() { return outcomeOf(*m_program); }

QList<SeenObject> PanelUser::look()
{
    QList<SeenObject> seen;
    m_reader->write("\n");
    while (!m_reader->canReadLine() && m_reader->waitForReadyRead(Patience)) { }
    const QJsonDocument tree = QJsonDocument::fromJson(m_reader->readLine());
    if (tree.isObject())
        collect(tree.object(), {}, seen);
    return seen;
}

std::optional<SeenObject> PanelUser::find(const QString &name, const QString &role)
{
    std::optional<SeenObject> found;
    const bool isThere = eventually([&] {
        const std::optional<SeenObject> before = std::exchange(found, pick(look(), name, role));
        return found && before && found->place == before->place;
    });
    if (!isThere)
        qWarning("there is no %s", qPrintable(name));
    return isThere ? found : std::nullopt;
}

bool PanelUser::isGone(const QString &name)
{
    return eventually([&] { return !sees(name); });
}

bool PanelUser::sees(const QString &name) { return pick(look(), name, {}).has_value(); }

QStringList PanelUser::buttons(const QString &beginning)
{
    QStringList names;
    for (const SeenObject &seen : look()) {
        if (seen.role == u"push button"_s && seen.name.startsWith(beginning))
            names.append(seen.name.mid(beginning.size()));
    }
    return names;
}

QString PanelUser::focused()
{
    QString name;
    for (const SeenObject &seen : look()) {
        if (seen.is("focused"_L1) && seen.role != u"filler"_s)
            name = seen.name;
    }
    return name;
}

bool PanelUser::isFocused(const QString &name)
{
    QString found;
    const bool is = eventually([&] { return (found = focused()) == name; });
    if (!is)
        qWarning("%s has the keyboard, not %s", qPrintable(found), qPrintable(name));
    return is;
}

bool PanelUser::click(const QString &name, int button)
{
    if (m_hands.click) {
        const auto panel = pick(look(), u"Tovel"_s, u"frame"_s);
        const std::optional<SeenObject> seen = find(name);
        if (panel && seen)
            m_hands.click(seen->place.center() - panel->place.topLeft(), button);
        return panel && seen;
    }
    if (!point(name))
        return false;
    m_session.run(u"xdotool"_s, {u"click"_s, QString::number(button)});
    return true;
}

bool PanelUser::point(const QString &name)
{
    const std::optional<SeenObject> seen = find(name);
    if (!seen)
        return false;
    const QPoint middle = seen->place.center();
    m_session.run(u"xdotool"_s,
                  {u"mousemove"_s, QString::number(middle.x()), QString::number(middle.y())});
    return true;
}

void PanelUser::press(const QStringList &keys)
{
    if (!m_hands.press) {
        m_session.run(u"xdotool"_s, QStringList{u"key"_s} + keys);
        return;
    }
    for (const QString &key : keys)
        m_hands.press(key);
}

void PanelUser::type(const QString &text) { m_session.run(u"xdotool"_s, {u"type"_s, text}); }

bool PanelUser::textIs(const QString &field, const QString &text)
{
    return eventually([&] {
        const auto found = pick(look(), field, u"text"_s);
        return found && found->text == text;
    });
}

DefaultsReading PanelUser::stored() const { return storedChoices(m_session); }

} // namespace tovel
