#pragma once

#include "settings/updates.h"

#include <functional>
#include <memory>

namespace tovel {

// What an updater was told, and what it answers; lives longer than the updater.
struct FakeUpdaterState
{
    int checks = 0;
    bool canCheck = false;
    std::function<void()> observer; // while somebody observes

    void setCanCheck(bool can)
    {
        canCheck = can;
        observer();
    }
};

class FakeUpdater final : public SPUStandardUpdaterController, private SPUUpdater
{
public:
    explicit FakeUpdater(FakeUpdaterState &state)
        : m_state(state)
    { }

    SPUUpdater &updater() override { return *this; }
    void startUpdater() override { }
    void checkForUpdates() override { ++m_state.checks; }

private:
    class Observation final : public KeyValueObservation
    {
    public:
        explicit Observation(FakeUpdaterState &state)
            : m_state(state)
        { }
        ~Observation() override { m_state.observer = nullptr; }

    private:
        FakeUpdaterState &m_state;
    };

    bool canCheckForUpdates() const override { return m_state.canCheck; }
    std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler) override
    {
        m_state.observer = std::move(handler);
        m_state.observer();
        return std::make_unique<Observation>(m_state);
    }

    FakeUpdaterState &m_state;
};

} // namespace tovel
