#include "model/texts.h"
#include "model/tovel_model.h"
#include "platform/accessibility.h"

#include <QPointer>

#include <coroutine>

namespace tovel {

namespace {

// Awaitable launch of an application; gives the reason of a failure.
class Launch
{
public:
    Launch(Workspace &workspace, const QUrl &location)
        : m_workspace(workspace)
        , m_location(location)
    { }

    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> waiting)
    {
        m_workspace.openApplicationAtURL(m_location,
                                         [this, waiting](std::optional<QString> reason) {
                                             m_reason = std::move(reason);
                                             waiting.resume();
                                         });
    }

    std::optional<QString> await_resume() { return std::move(m_reason); }

private:
    Workspace &m_workspace;
    QUrl m_location;
    std::optional<QString> m_reason;
};

} // namespace

DefaultsOutcome TovelModel::select(const RunningApp &app, bool on) { return selectAll({app}, on); }

DefaultsOutcome TovelModel::selectAll(const QList<RunningApp> &apps, bool on)
{
    setIssues({});
    setMessage({});
    publish(m_hasSkippedWindows, false, Property::hasSkippedWindows);

    QList<StoredChoices::Change> changes;
    for (const RunningApp &app : apps) {
        changes.append({ChoiceKeys::selected + u'/' + app.id,
                        [id = app.id, name = app.name, on](Choices &choices) {
                            if (on) {
                                choices.selected.insert(id);
                                choices.appNames.insert(id, name);
                            } else {
                                choices.selected.remove(id);
                            }
                        }});
    }
    const DefaultsOutcome outcome
        = m_choices.change({ChoiceKeys::selected, ChoiceKeys::appNames}, changes);
    showChoices();
    refresh();
    return outcome;
}

QCoro::Task<> TovelModel::reopen(RunningApp app)
{
    if (m_busy)
        co_return;
    const QPointer<TovelModel> guard(this);
    Workspace &workspace = m_platform.workspace();
    const auto location = workspace.URLForApplicationWithBundleIdentifier(app.id);
    if (!location) {
        setIssues({ModelTexts::couldNotFind(app.name)});
        co_return;
    }
    setIssues({});
    Launch launch(workspace, *location);
    const std::optional<QString> reason = co_await launch;
    if (!guard)
        co_return;
    if (reason)
        setIssues({ModelTexts::couldNotOpen(app.name, *reason)});
    refresh();
}

void TovelModel::requestAccess()
{
    const QString prompt = QStringView(kAXTrustedCheckOptionPrompt).toString();
    m_platform.accessibility().AXIsProcessTrustedWithOptions({{prompt, true}});
    m_platform.workspace().openAccessibilitySettings();
}

} // namespace tovel
