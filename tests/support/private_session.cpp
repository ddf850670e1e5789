#include "support/private_session.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>
#include <csignal>

#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int Deadline = 30000; // for a program to start or to end

const QString Socket = u"wayland-test"_s;

std::unique_ptr<QProcess> makeProcess(const QProcessEnvironment &environment)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setStandardInputFile(QProcess::nullDevice());
    // Nobody is left to end it when the test itself is killed.
    process->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    return process;
}

void end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(2000)) {
        process.kill();
        process.waitForFinished();
    }
}

// Nothing of the desktop that the test was started from, whatever that sets.
QProcessEnvironment bareEnvironment()
{
    static const QRegularExpression kept(
        u"^(PATH|PWD|SHELL|TERM|TMPDIR|USER|LOGNAME|\\w+SAN_OPTIONS|GCOV_\\w+|TOVEL_TEST_\\w+)$"_s);
    QProcessEnvironment bare;
    const QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    for (const QString &name : all.keys()) {
        if (kept.match(name).hasMatch())
            bare.insert(name, all.value(name));
    }
    bare.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    return bare;
}

} // namespace

Manager managerFromEnvironment()
{
    const QByteArray name = qgetenv("TOVEL_TEST_MANAGER");
    if (name == "icewm")
        return Manager::Icewm;
    if (name == "kwin")
        return Manager::KWin;
    if (name == "i3")
        return Manager::I3;
    if (name == "sway")
        return Manager::Sway;
    if (name == "gnome")
        return Manager::Gnome;
    return name == "xfwm4" ? Manager::Xfwm4 : Manager::Openbox;
}

PrivateSession::PrivateSession(Manager manager, const SessionOptions &options)
    : m_environment(bareEnvironment())
    , m_manager(manager)
    , m_options(options)
    , m_desktops(manager == Manager::I3 ? std::min(options.desktops, 2) : options.desktops)
{
    m_environment.insert(u"GDK_BACKEND"_s, u"x11"_s);
    m_environment.insert(u"NO_AT_BRIDGE"_s, u"1"_s);
    const QPair<QString, QString> folders[] = {{u"HOME"_s, u"home"_s},
                                               {u"XDG_CONFIG_HOME"_s, u"config"_s},
                                               {u"XDG_DATA_HOME"_s, u"data"_s},
                                               {u"XDG_CACHE_HOME"_s, u"cache"_s},
                                               {u"XDG_RUNTIME_DIR"_s, u"run"_s}};
    for (const auto &[variable, name] : folders) {
        m_environment.insert(variable, m_folder.filePath(name));
        QDir(m_folder.path()).mkdir(name);
    }
    QFile::setPermissions(m_folder.filePath(u"run"_s),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    writeConfiguration(options);
    if (manager == Manager::Gnome)
        writeGnomeConfiguration();

    if (manager == Manager::KWin || manager == Manager::Sway || manager == Manager::Gnome) {
        startBus(options.assistive);
        if (options.permitsAll)
            m_environment.insert(u"KWIN_WAYLAND_NO_PERMISSION_CHECKS"_s, u"1"_s);
        startManager();
        return;
    }
    m_processes.push_back(makeProcess(m_environment));
    m_server = m_processes.back().get();
    m_server->setStandardErrorFile(QProcess::nullDevice());
    // A server that resets when its last client leaves would drop a manager that just connects.
    m_server->start(
        u"Xvfb"_s,
        {u"-displayfd"_s, u"1"_s, u"-noreset"_s, options.tcp ? u"-listen"_s : u"-nolisten"_s,
         u"tcp"_s, u"-screen"_s, u"0"_s,
         QString::fromLatin1(manager == Manager::I3 ? QByteArray("2560x800x24") : options.screen)});
    while (!m_server->canReadLine() && m_server->waitForReadyRead(Deadline)) { }
    const QByteArray number = m_server->readLine().trimmed();
    if (number.isEmpty())
        return;
    m_display = ':' + number;
    m_environment.insert(u"DISPLAY"_s, QString::fromLatin1(m_display));
    if (manager == Manager::Xfwm4 || options.bus || options.assistive)
        startBus(options.assistive);
    startManager();
}

void PrivateSession::startBus(bool assistive)
{
    const QString bus = u"unix:path="_s + m_folder.filePath(u"run/bus"_s);
    start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--address="_s + bus});
    eventually([this] { return QFile::exists(m_folder.filePath(u"run/bus"_s)); });
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus);
    if (assistive) {
        m_environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
        start(u"/usr/libexec/at-spi-bus-launcher"_s, {u"--launch-immediately"_s});
    }
}

PrivateSession::~PrivateSession()
{
    while (!m_processes.empty()) {
        end(*m_processes.back());
        m_processes.pop_back();
    }
    // A service that the bus had started may still be at its last file.
    m_folder.setAutoRemove(false);
    eventually([this] { return QDir(m_folder.path()).removeRecursively(); });
}

void PrivateSession::write(const QString &path, const QString &text) const
{
    const QString full = m_folder.filePath(path);
    QDir().mkpath(QFileInfo(full).path());
    QFile file(full);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qWarning("%s cannot be written", qPrintable(full));
}

void PrivateSession::writeConfiguration(const SessionOptions &options) const
{
    write(u"config/openbox/rc.xml"_s,
          u"<openbox_config xmlns=\"http://openbox.org/3.4/rc\"><desktops><number>%1</number>"
          "</desktops></openbox_config>\n"_s.arg(options.desktops));
    QStringList names;
    for (int i = 1; i <= options.desktops; ++i)
        names.append(u"\"%1\""_s.arg(i));
    write(u"home/.icewm/preferences"_s,
          u"WorkspaceNames=%1\nTaskBarEnableSystemTray=0\n"_s.arg(names.join(u',')));
    QString desktops = u"[Desktops]\nNumber=%1\nRows=1\n"_s.arg(options.desktops);
    for (int i = 1; i <= options.desktops; ++i)
        desktops += u"Id_%1=00000000-0000-4000-8000-00000000000%1\n"_s.arg(i);
    write(u"config/kwinrc"_s, desktops);
    QString tiling = u"default_floating_border none\nfor_window [class=\".*\"] floating enable\n"_s;
    for (const QString &name : names)
        tiling += u"workspace %1 output $left\n"_s.arg(name);
    tiling += u"workspace 5 output $right\nset $far \"6: far\"\nworkspace $far output $right\n"_s;
    write(u"config/i3/config"_s,
          u"# i3 config file (v4)\nfont pango:monospace 8\n"
          "fake-outputs 1280x800+0+0%1\nset $left fake-0\nset $right fake-1\n"_s.arg(
              options.desktops == 1 ? u""_s : u",1280x800+1280+0"_s)
              + tiling);
    // Nobody but the one that sway runs as would be let in by its X server.
    write(u"config/sway/config"_s,
          u"output HEADLESS-1 pos 0 0 res 1280x800\noutput HEADLESS-2 pos 1280 0 res 1024x768\n"
          "set $left HEADLESS-1\nset $right HEADLESS-2\n"
          "for_window [app_id=\"^(?!org.tovel)\"] floating enable\nexec xhost +si:localuser:%1 && "
          "echo $DISPLAY $WAYLAND_DISPLAY > $XDG_RUNTIME_DIR/names && "
          "mv $XDG_RUNTIME_DIR/names $XDG_RUNTIME_DIR/ready\n"_s.arg(
              QString::fromLocal8Bit(getpwuid(getuid())->pw_name))
              + tiling);
    const QString action = options.activateAction.isEmpty()
        ? QString()
        : u"<property name=\"activate_action\" type=\"string\" value=\"%1\"/>"_s.arg(
            options.activateAction);
    write(u"config/xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml"_s,
          u"<?xml version=\"1.0\"?><channel name=\"xfwm4\" version=\"1.0\"><property "
          "name=\"general\" type=\"empty\"><property name=\"workspace_count\" type=\"int\" "
          "value=\"%1\"/>%2</property></channel>\n"_s.arg(options.desktops)
              .arg(action));
}

void PrivateSession::install(const QString &identifier, const QString &name,
                             const QString &windowClass, const QString &command) const
{
    write(u"data/applications/%1.desktop"_s.arg(identifier),
          u"[Desktop Entry]\nType=Application\nName=%1\nExec=%3\nStartupWMClass=%2\n"_s.arg(
              name, windowClass, command));
}

void PrivateSession::adopt() const
{
    for (const QString &variable : QProcessEnvironment::systemEnvironment().keys())
        qunsetenv(variable.toLocal8Bit());
    for (const QString &variable : m_environment.keys())
        qputenv(variable.toLocal8Bit(), m_environment.value(variable).toLocal8Bit());
}

bool PrivateSession::isReady()
{
    if (m_manager == Manager::KWin)
        return isKWinReady();
    if (m_manager == Manager::Sway)
        return isSwayReady();
    if (m_manager == Manager::Gnome)
        return isGnomeReady();
    if (m_display.isEmpty()) {
        qWarning("the X server does not start: %s", qPrintable(m_server->errorString()));
        return false;
    }
    // Managers differ in which of the two they do first.
    const QString wanted = u"= %1"_s.arg(m_desktops);
    QString count;
    QString manager;
    const bool isReady = eventually(
        [&] {
            count = run(u"xprop"_s, {u"-root"_s, u"_NET_NUMBER_OF_DESKTOPS"_s}).out.trimmed();
            manager = run(u"wmctrl"_s, {u"-m"_s}).out;
            return count.endsWith(wanted) && manager.startsWith(u"Name: ")
                && !manager.startsWith(u"Name: N/A");
        },
        Deadline);
    if (!isReady) {
        qWarning("the window manager %s on %s; %s; %s",
                 isManagerRunning() ? "is not ready" : "has ended", m_display.constData(),
                 qPrintable(count), qPrintable(manager));
    }
    return isReady;
}

QProcess &PrivateSession::start(const QString &program, const QStringList &arguments)
{
    m_processes.push_back(makeProcess(m_environment));
    QProcess &process = *m_processes.back();
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    process.waitForStarted();
    return process;
}

std::unique_ptr<QProcess> PrivateSession::launch(const QString &program,
                                                 const QStringList &arguments,
                                                 const QProcessEnvironment &environment,
                                                 Input input) const
{
    auto process = makeProcess(environment);
    if (input == Input::Open)
        process->setStandardInputFile({});
    process->start(program, arguments);
    process->waitForStarted();
    return process;
}

Outcome PrivateSession::run(const QString &program, const QStringList &arguments) const
{
    return run(program, arguments, {});
}

Outcome PrivateSession::run(const QString &program, const QStringList &arguments,
                            const QProcessEnvironment &changes) const
{
    QProcessEnvironment environment = m_environment;
    environment.insert(changes);
    return outcomeOf(*launch(program, arguments, environment));
}

void PrivateSession::startManager()
{
    if (m_manager == Manager::KWin)
        startKWin();
    else if (m_manager == Manager::Sway)
        startSway();
    else if (m_manager == Manager::Gnome)
        startGnome();
    else if (m_manager == Manager::Openbox)
        m_managerProcess = &start(u"openbox"_s, {u"--sm-disable"_s});
    else if (m_manager == Manager::Icewm)
        m_managerProcess = &start(u"icewm"_s, {});
    else if (m_manager == Manager::Xfwm4)
        m_managerProcess = &start(u"xfwm4"_s, {u"--compositor=off"_s});
    else
        m_managerProcess = &start(u"i3"_s, {u"-c"_s, m_folder.filePath(u"config/i3/config"_s)});
}

// A copy, because the program's file has a capability that cannot be had everywhere.
void PrivateSession::startKWin()
{
    const QString copy = m_folder.filePath(u"kwin_wayland"_s);
    QFile::copy(QStandardPaths::findExecutable(u"kwin_wayland"_s), copy);
    m_environment.insert(u"LIBGL_ALWAYS_SOFTWARE"_s, u"1"_s);
    for (const auto &variable : {u"WAYLAND_DISPLAY"_s, u"DISPLAY"_s})
        m_environment.remove(variable);
    // KWin 6 knows the desktop files that a menu has, and brings none.
    write(u"config/menus/applications.menu"_s,
          u"<Menu><Name>Applications</Name><DefaultAppDirs/><Include><All/></Include></Menu>\n"_s);
    QStringList arguments{u"--virtual"_s, u"--width"_s,         u"1280"_s,     u"--height"_s,
                          u"800"_s,       u"--no-lockscreen"_s, u"--socket"_s, Socket};
    if (m_options.xwayland) {
        // As every X server does; KWin wants it to be there.
        if (::mkdir("/tmp/.X11-unix", 0) == 0)
            ::chmod("/tmp/.X11-unix", 01777);
        // A program that KWin starts is told which display it is.
        write(u"tell-display"_s, u"#!/bin/sh\necho $DISPLAY > ${0%/*}/display\n"_s);
        const QString script = m_folder.filePath(u"tell-display"_s);
        QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
        arguments += {u"--xwayland"_s, script};
    }
    m_managerProcess = &start(copy, arguments);
    m_server = m_managerProcess;
    m_environment.insert(u"WAYLAND_DISPLAY"_s, Socket);
    m_environment.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    m_environment.insert(u"XDG_SESSION_TYPE"_s, u"wayland"_s);
    m_environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"KDE"_s);
}

bool PrivateSession::isKWinReady()
{
    const bool isReady = eventually(
        [this] {
            return run(u"gdbus"_s,
                       {u"call"_s, u"--session"_s, u"--dest"_s, u"org.kde.KWin"_s,
                        u"--object-path"_s, u"/VirtualDesktopManager"_s, u"--method"_s,
                        u"org.freedesktop.DBus.Properties.Get"_s,
                        u"org.kde.KWin.VirtualDesktopManager"_s, u"count"_s})
                       .out.trimmed()
                == u"(<uint32 %1>,)"_s.arg(m_desktops);
        },
        Deadline);
    QFile display(m_folder.filePath(u"display"_s));
    if (m_options.xwayland && eventually([&] {
            return QFileInfo(display).size() > 1 && display.open(QFile::ReadOnly);
        })) {
        m_display = display.readAll().trimmed();
        m_environment.insert(u"DISPLAY"_s, QString::fromLatin1(m_display));
    }
    if (!isReady)
        qWarning("KWin %s", isManagerRunning() ? "is not ready" : "has ended");
    return isReady;
}

// It refuses to run as root, and then does as somebody without rights.
void PrivateSession::startSway()
{
    const QString folder = m_folder.filePath(u"run"_s);
    const QString socket = folder + u"/sway.sock"_s;
    for (const QString &left : {socket, folder + u"/ready"_s})
        QFile::remove(left);
    const std::pair<QString, QString> variables[]
        = {{u"SWAYSOCK"_s, socket},
           {u"WLR_BACKENDS"_s, u"headless"_s},
           {u"WLR_HEADLESS_OUTPUTS"_s, m_desktops == 1 ? u"1"_s : u"2"_s},
           {u"WLR_RENDERER"_s, u"pixman"_s},
           {u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s}};
    for (const auto &[name, value] : variables)
        m_environment.insert(name, value);
    for (const auto &name : {u"WAYLAND_DISPLAY"_s, u"DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
        m_environment.remove(name);
    QStringList words{u"sway"_s, u"-c"_s, m_folder.filePath(u"config/sway/config"_s)};
    if (getuid() == 0) {
        const passwd *nobody = getpwnam("nobody");
        for (const QString &owned : {m_folder.path(), folder}) {
            if (::chown(QFile::encodeName(owned).constData(), nobody->pw_uid, nobody->pw_gid) != 0)
                qWarning("%s cannot be given away", qPrintable(owned));
        }
        words = QStringList{u"setpriv"_s, u"--reuid=nobody"_s, u"--regid=nogroup"_s,
                            u"--clear-groups"_s, u"--pdeathsig=TERM"_s}
            + words;
    }
    m_managerProcess = &start(words.takeFirst(), words);
    m_server = m_managerProcess;
}

bool PrivateSession::isSwayReady()
{
    QFile ready(m_folder.filePath(u"run/ready"_s));
    if (!eventually([&] { return ready.open(QIODevice::ReadOnly); }, Deadline)) {
        qWarning("sway %s", isManagerRunning() ? "is not ready" : "has ended");
        return false;
    }
    const QList<QByteArray> names = ready.readAll().trimmed().split(' ');
    m_display = names.value(0);
    m_environment.insert(u"DISPLAY"_s, QString::fromLatin1(m_display));
    m_environment.insert(u"WAYLAND_DISPLAY"_s, QString::fromLatin1(names.value(1)));
    m_environment.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    return true;
}

bool PrivateSession::isManagerRunning()
{
    m_managerProcess->waitForFinished(0);
    return m_managerProcess->state() == QProcess::Running;
}

void PrivateSession::killManager()
{
    m_managerProcess->kill();
    m_managerProcess->waitForFinished();
}

void PrivateSession::pauseManager(bool paused) { setPaused(*m_managerProcess, paused); }

void PrivateSession::killServer()
{
    m_server->kill();
    m_server->waitForFinished();
}

void PrivateSession::pauseServer(bool paused) { setPaused(*m_server, paused); }

void setPaused(const QProcess &process, bool paused)
{
    const qint64 id = process.processId();
    kill(static_cast<pid_t>(id), paused ? SIGSTOP : SIGCONT);
    // Any thread may be carrying something out on another processor.
    const auto hasStopped = [folder = u"/proc/%1/task/"_s.arg(id)] {
        const QStringList threads = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        return std::ranges::all_of(threads, [&folder](const QString &thread) {
            QFile status(folder + thread + u"/status"_s);
            return !status.open(QIODevice::ReadOnly) || status.readAll().contains("\nState:\tT");
        });
    };
    if (paused)
        eventually(hasStopped);
}

Outcome outcomeOf(QProcess &process)
{
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(Deadline)) {
        process.kill();
        process.waitForFinished();
        return {-1, {}, u"it did not end"_s};
    }
    const bool isRegular = process.error() != QProcess::FailedToStart
        && process.exitStatus() == QProcess::NormalExit;
    return {isRegular ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

bool eventually(const std::function<bool()> &condition, int deadline)
{
    return QTest::qWaitFor(condition, deadline);
}

} // namespace tovel
