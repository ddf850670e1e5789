#include "support/private_session.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString Extension = u"tovel@tovel.org"_s;
const QString Ready = u"ready@tovel.org"_s;

// Starts the Shell without its overview, and leaves word of where its X server is once it has
// started.
const QString ReadyScript
    = u"class Ready {\n"
      "    enable() {\n"
      "        Main.sessionMode.hasOverview = false;\n"
      "        Main.layoutManager.connect('startup-complete', () => GLib.file_set_contents(\n"
      "            `${GLib.getenv('XDG_RUNTIME_DIR')}/ready`,\n"
      "            `${GLib.getenv('DISPLAY')} ${GLib.getenv('XAUTHORITY')}`));\n"
      "    }\n"
      "    disable() {}\n"
      "}\n"_s;

} // namespace

void PrivateSession::writeGnomeConfiguration() const
{
    const QString boolean[] = {u"false"_s, u"true"_s};
    QStringList enabled{u"'%1'"_s.arg(Ready)};
    if (m_options.permitsAll)
        enabled.append(u"'%1'"_s.arg(Extension));
    write(u"config/glib-2.0/settings/keyfile"_s,
          u"[org/gnome/shell]\nenabled-extensions=[%1]\nwelcome-dialog-last-shown-version='999'\n"
          "[org/gnome/mutter]\ndynamic-workspaces=%2\nworkspaces-only-on-primary=%3\n"
          "[org/gnome/desktop/wm/preferences]\nnum-workspaces=%4\n"_s.arg(
              enabled.join(u','), boolean[m_desktops == 0], boolean[m_options.fixedScreens],
              QString::number(qMax(1, m_desktops))));
    QFile file(QStringLiteral(TOVEL_GNOME_DATA) + u"/gnome-shell/extensions/"_s + Extension
               + u"/metadata.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        qWarning("the extension is not built");
    QString metadata = QString::fromUtf8(file.readAll());
    const bool isOld = metadata.contains(u"\"43\"");
    const QString own = m_environment.value(u"XDG_DATA_HOME"_s) + u"/gnome-shell/extensions/"_s;
    QDir().mkpath(own);
    QFile::link(QFileInfo(file).path(), own + Extension);
    const QString folder = u"data/gnome-shell/extensions/"_s + Ready;
    write(folder + u"/metadata.json"_s, metadata.replace(Extension, Ready));
    write(folder + u"/extension.js"_s,
          isOld ? u"const {GLib} = imports.gi;\nconst Main = imports.ui.main;\n"_s + ReadyScript
                  + u"function init() { return new Ready(); }\n"_s
                : u"import GLib from 'gi://GLib';\n"
                  "import * as Main from 'resource:///org/gnome/shell/ui/main.js';\n"_s
                  + ReadyScript + u"export default Ready;\n"_s);
}

void PrivateSession::startGnome()
{
    const std::pair<QString, QString> variables[]
        = {{u"GSETTINGS_BACKEND"_s, u"keyfile"_s},
           {u"LIBGL_ALWAYS_SOFTWARE"_s, u"1"_s},
           {u"XDG_DATA_DIRS"_s, u"/usr/share"_s},
           // It needs one, whoever is on it.
           {u"DBUS_SYSTEM_BUS_ADDRESS"_s, m_environment.value(u"DBUS_SESSION_BUS_ADDRESS"_s)},
           {u"XDG_CURRENT_DESKTOP"_s, u"GNOME"_s},
           {u"XDG_SESSION_TYPE"_s, u"wayland"_s}};
    for (const auto &[name, value] : variables)
        m_environment.insert(name, value);
    for (const auto &name : {u"WAYLAND_DISPLAY"_s, u"DISPLAY"_s, u"XAUTHORITY"_s})
        m_environment.remove(name);
    QFile::remove(m_folder.filePath(u"run/ready"_s));
    // A Shell that was killed has left its socket.
    for (const auto &name : {u"run/wayland-test"_s, u"run/wayland-test.lock"_s})
        QFile::remove(m_folder.filePath(name));
    QStringList words{u"--headless"_s, u"--wayland"_s, u"--wayland-display"_s, u"wayland-test"_s};
    for (int i = 0; i < m_options.monitors; ++i)
        words += {u"--virtual-monitor"_s, u"1280x800"_s};
    if (m_options.evaluates)
        words.append(u"--unsafe-mode"_s);
    m_managerProcess = &start(u"gnome-shell"_s, words);
    m_server = m_managerProcess;
}

bool PrivateSession::isGnomeReady()
{
    QFile ready(m_folder.filePath(u"run/ready"_s));
    if (!eventually([&] { return ready.open(QIODevice::ReadOnly); }, 30000)) {
        qWarning("GNOME Shell %s", isManagerRunning() ? "is not ready" : "has ended");
        return false;
    }
    const QString text = QString::fromUtf8(ready.readAll());
    m_display = text.section(u' ', 0, 0).toLatin1();
    m_environment.insert(u"DISPLAY"_s, text.section(u' ', 0, 0));
    m_environment.insert(u"XAUTHORITY"_s, text.section(u' ', 1));
    m_environment.insert(u"WAYLAND_DISPLAY"_s, u"wayland-test"_s);
    m_environment.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    return true;
}

} // namespace tovel
