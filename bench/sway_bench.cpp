// Measures Tovel on a private sway, side by side with what else reads the same session. The windows
// are those of as many programs: sway_bench NAME is one of them.
#include "figures.h"
#include "timing.h"

#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/i3/i3_session.h"
#include "support/private_session.h"
#include "support/tiling_user.h"
#include "support/wayland_client.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Windows = 100;
constexpr int Starts = 11;

// A client that knows nothing but how to ask for the tree.
class BareClient
{
public:
    explicit BareClient(const QByteArray &path)
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::ranges::copy(path, address.sun_path);
        if (::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            qFatal("sway does not answer");
    }
    ~BareClient() { ::close(m_socket); }
    BareClient(const BareClient &) = delete;
    BareClient &operator=(const BareClient &) = delete;

    void readTree()
    {
        constexpr std::array<char, 14> request{'i', '3', '-', 'i', 'p', 'c', 0,
                                               0,   0,   0,   4,   0,   0,   0};
        if (::send(m_socket, request.data(), request.size(), 0) <= 0)
            qFatal("sway does not listen");
        std::array<char, 14> head{};
        receive(head.data(), head.size());
        std::uint32_t size = 0;
        std::memcpy(&size, head.data() + 6, sizeof size);
        m_tree.resize(size);
        receive(m_tree.data(), size);
    }

private:
    void receive(char *to, std::size_t size)
    {
        if (::recv(m_socket, to, size, MSG_WAITALL) != static_cast<ssize_t>(size))
            qFatal("sway does not answer");
    }

    int m_socket;
    std::vector<char> m_tree;
};

class Bench
{
public:
    bool start()
    {
        for (int i = 0; i < Windows; ++i) {
            const QString name = u"Bench%1"_s.arg(i);
            m_session.install(name, name, name);
        }
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        for (int i = 0; i < Windows; ++i)
            m_session.start(QCoreApplication::applicationFilePath(), {u"Bench%1"_s.arg(i)});
        const TilingUser user(m_session);
        return eventually([&] { return user.windows().size() == Windows; }, 60000);
    }

    void measureStatus()
    {
        const auto whole = [this](const QString &program, const QStringList &arguments) {
            return [=, this] {
                return millisecondsOf([&] {
                    if (m_session.run(program, arguments).status != 0)
                        qFatal("%s failed", qPrintable(program));
                });
            };
        };
        const auto times = medians(Starts,
                                   {whole(u"swaymsg"_s, {u"-t"_s, u"get_tree"_s}),
                                    whole(QStringLiteral(TOVELCTL), {u"status"_s}),
                                    whole(QStringLiteral(TOVELCTL), {u"--version"_s})});
        std::printf("  tovelctl status %.1f ms, its start %.1f ms, swaymsg %.1f ms\n", times[1],
                    times[2], times[0]);
        printFigure("tovelctl status / swaymsg -t get_tree", times[1] / times[0], 1.5);
    }

    void measureReading()
    {
        const QByteArray path = qgetenv("SWAYSOCK");
        auto driver = i3::I3Session::open(path);
        DesktopSession &session = *driver;
        LinuxDesktop desktop(std::move(driver));
        const PlatformInstallation installation(desktop);
        TovelModel model(desktop);
        model.selectAll(model.apps().first(Windows / 2), true);
        model.refresh();
        if (model.traveling().size() != Windows / 2)
            qFatal("the flock has not half of the windows");
        BareClient bare(path);
        const auto times = medians(300,
                                   {[&] { return millisecondsOf([&] { bare.readTree(); }); },
                                    [&] {
                                        return millisecondsOf([&] {
                                            session.invalidate();
                                            model.refresh();
                                        });
                                    }});
        std::printf("  warm refresh %.4f ms, bare tree %.4f ms\n", times[1], times[0]);
        printFigure("one warm refresh / one bare reading of the tree", times[1] / times[0], 1.2);

        const Desktop target = model.desktops().at(1);
        const double moved = millisecondsOf([&] {
            bool ended = false;
            auto task = model.migrate(target, false).then([&] { ended = true; });
            while (!ended)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
        if (model.flockDesktopID() != target.id)
            qFatal("not every window has moved");
        printFigure("50 windows moved / 50 x 0.06 s", moved / 3000, 1.05);
    }

private:
    PrivateSession m_session{Manager::Sway};
};

int showWindow(const QString &name)
{
    WaylandClient client(qgetenv("WAYLAND_DISPLAY"));
    client.open({.application = name, .title = name});
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc > 1)
        return showWindow(QString::fromLocal8Bit(argv[1]));
    Bench bench;
    if (!bench.start())
        qFatal("there is no sway");
    std::printf("\nsway with %d windows of as many programs\n", Windows);
    bench.measureStatus();
    bench.measureReading();
    return 0;
}
