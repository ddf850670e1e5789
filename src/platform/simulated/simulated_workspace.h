#pragma once

#include "platform/workspace.h"

namespace tovel {

struct SimulatedState;

class SimulatedWorkspace final : public Workspace
{
public:
    explicit SimulatedWorkspace(SimulatedState &state);

    QList<NSRunningApplicationRef> runningApplications() const override;
    NSRunningApplicationRef runningApplicationWithProcessIdentifier(
        std::int32_t pid) const override;
    std::optional<QUrl> URLForApplicationWithBundleIdentifier(
        const QString &bundleIdentifier) const override;
    std::optional<QString> localizedNameOfApplicationAtURL(const QUrl &location) const override;
    void openApplicationAtURL(const QUrl &location, LaunchHandler handler) override;
    void openAccessibilitySettings() override;
    QList<NSScreen> screens() const override;
    [[nodiscard]] Subscription observeActiveSpaceDidChange(std::function<void()> handler) override;
    QString mainBundleIdentifier() const override;

private:
    SimulatedState &m_state;
};

} // namespace tovel
