#pragma once

#include "model/tovel_model.h"
#include "platform/simulated/simulated_desktop.h"

#include <QCoroTask>
#include <QMetaEnum>

#include <functional>
#include <memory>
#include <optional>

namespace tovel {

using namespace Qt::StringLiterals;

inline constexpr std::int32_t notesPid = 500;
inline constexpr std::int32_t mailPid = 501;

// Two displays: A with desktops 10, 11 and 12 and the full-screen space 50 before the last, and B
// with desktops 20 and 21; 10 and 20 are shown. Two applications, both chosen: Notes with window
// 101 on 10, and Mail with window 102 on 11. The cursor is on A.
class ModelWorld
{
public:
    ModelWorld()
        : m_installation(desktop.platform())
        , m_startTime(desktop.clock().monotonicTime())
    {
        desktop.addDisplay({.identifier = u"A"_s,
                            .number = 1,
                            .builtIn = true,
                            .bounds = QRectF(0, 0, 1920, 1080),
                            .name = u"Left"_s,
                            .spaces = {{.id = 10, .uuid = u"ten"_s},
                                       {.id = 11, .uuid = u"eleven"_s},
                                       {.id = 50, .type = 4},
                                       {.id = 12}},
                            .currentSpace = 10});
        desktop.addDisplay({.identifier = u"B"_s,
                            .number = 2,
                            .bounds = QRectF(1920, 0, 1000, 800),
                            .name = u"Right"_s,
                            .spaces = {{.id = 20}, {.id = 21}},
                            .currentSpace = 20});
        desktop.addApplication(
            {.pid = notesPid, .bundleIdentifier = u"org.notes"_s, .name = u"Notes"_s});
        desktop.addApplication(
            {.pid = mailPid, .bundleIdentifier = u"org.mail"_s, .name = u"Mail"_s});
        desktop.addWindow({.number = 101, .pid = notesPid, .title = u"List"_s, .spaces = {10}});
        desktop.addWindow({.number = 102, .pid = mailPid, .spaces = {11}});
        defaults().put(u"selected"_s, QStringList{u"org.notes"_s, u"org.mail"_s});
    }

    MemoryUserDefaults &defaults() { return desktop.userDefaults().standardUserDefaults(); }
    DefaultsReading stored() { return defaults().dictionaryRepresentation(); }
    SimWorld &facts() { return desktop.world(); }
    SimApplication &app(std::int32_t pid) { return desktop.application(pid); }
    SimWindow &window(std::uint32_t number) { return desktop.window(number); }
    QList<SimSpace> &spacesOfA() { return desktop.display(u"A"_s).spaces; }
    std::uint64_t shownOnA() { return desktop.display(u"A"_s).currentSpace; }
    double elapsed() { return desktop.clock().monotonicTime() - m_startTime; }

    // Makes the model and starts every record afresh.
    TovelModel &start()
    {
        model = std::make_unique<TovelModel>(desktop.platform());
        QObject::connect(model.get(), &TovelModel::willChange, model.get(),
                         [this](TovelModel::Property property) { m_announced = property; });
        QObject::connect(model.get(), &TovelModel::didChange, model.get(),
                         [this](TovelModel::Property property) {
                             Q_ASSERT(m_announced == property);
                             m_changes.append(QLatin1StringView(
                                 QMetaEnum::fromType<TovelModel::Property>().valueToKey(
                                     static_cast<int>(property))));
                         });
        defaults().takeWrites();
        desktop.takeJournal();
        return *model;
    }

    // Names of the properties that changed since the last call, in order.
    QStringList takeChanges() { return std::exchange(m_changes, {}); }

    Desktop target(std::uint64_t id) const
    {
        for (const Desktop &item : model->readDesktops()) {
            if (item.id == id)
                return item;
        }
        return {.id = id};
    }

    TravelWindow listed(std::uint32_t id) const
    {
        for (const TravelWindow &item : model->windows()) {
            if (item.id == id)
                return item;
        }
        return {};
    }

    // Runs a task in virtual time; false, or nothing, when it does not end.
    bool finish(const QCoro::Task<> &task)
    {
        return desktop.clock().runUntil([&] { return task.isReady(); }, 600);
    }
    std::optional<bool> finish(QCoro::Task<bool> task)
    {
        std::optional<bool> result;
        const auto waiting = store(std::move(task), &result);
        desktop.clock().runUntil([&] { return result.has_value(); }, 600);
        return result;
    }

    SimulatedDesktop desktop;

private:
    static QCoro::Task<> store(QCoro::Task<bool> task, std::optional<bool> *result)
    {
        const bool value = co_await task;
        *result = value;
    }

    PlatformInstallation m_installation;
    double m_startTime;
    std::optional<TovelModel::Property> m_announced;
    QStringList m_changes;

public:
    std::unique_ptr<TovelModel> model;
};

// What a row of a table does to the world.
using Change = std::function<void(ModelWorld &)>;
inline const Change nothing = [](ModelWorld &) {};

} // namespace tovel
